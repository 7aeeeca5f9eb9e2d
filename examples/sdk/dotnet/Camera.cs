using System;
using System.Runtime.InteropServices;
using Zuvy.Qor.Native;

namespace Zuvy.Qor
{
    /// <summary>An opened camera. A failing call throws InvalidOperationException.</summary>
    public sealed class Camera : IDisposable
    {
        private readonly CameraHandle handle;

        public Camera(int index)
        {
            Check(NativeMethods.qorOpen(index, out handle));
        }

        public string Name
        {
            get { return Marshal.PtrToStringAnsi(NativeMethods.qorName(handle)); }
        }

        public string Serial
        {
            get { return Marshal.PtrToStringAnsi(NativeMethods.qorSerial(handle)); }
        }

        public Frame Grab()
        {
            var frame = new Frame(NativeMethods.qorWidth(handle), NativeMethods.qorHeight(handle));
            var size = new UIntPtr((uint)frame.Pixels.Length);
            Check(NativeMethods.qorGrab(handle, frame.Pixels, size));
            return frame;
        }

        public void Dispose()
        {
            handle.Dispose();
        }

        private static void Check(QorError error)
        {
            if (error != QorError.Ok)
                throw new InvalidOperationException(
                    Marshal.PtrToStringAnsi(NativeMethods.qorErrorText(error)));
        }
    }
}
