using System;
using System.Runtime.InteropServices;
using Microsoft.Win32.SafeHandles;

namespace Zuvy.Qor.Native
{
    internal enum QorError
    {
        Ok = 0
    }

    internal sealed class CameraHandle : SafeHandleZeroOrMinusOneIsInvalid
    {
        private CameraHandle() : base(true) { }

        protected override bool ReleaseHandle()
        {
            NativeMethods.qorClose(handle);
            return true;
        }
    }

    // The functions of qorsdk.h, with their names.
    internal static class NativeMethods
    {
        private const string Library = "qorSDK";

        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        internal static extern IntPtr qorErrorText(QorError error);

        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        internal static extern QorError qorOpen(int index, out CameraHandle camera);

        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        internal static extern void qorClose(IntPtr camera);

        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        internal static extern IntPtr qorName(CameraHandle camera);

        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        internal static extern IntPtr qorSerial(CameraHandle camera);

        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        internal static extern int qorWidth(CameraHandle camera);

        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        internal static extern int qorHeight(CameraHandle camera);

        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        internal static extern QorError qorGrab(CameraHandle camera, byte[] pixels, UIntPtr size);
    }
}
