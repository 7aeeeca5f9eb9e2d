using System;
using System.Runtime.InteropServices;

namespace DotnetInfo.Native
{
    internal static class QorSdk
    {
        [DllImport("qorSDK", EntryPoint = "qorCameraCount",
                   CallingConvention = CallingConvention.Cdecl)]
        internal static extern int CameraCount();

        internal static string Version
        {
            get { return Marshal.PtrToStringAnsi(qorVersion()); }
        }

        [DllImport("qorSDK", CallingConvention = CallingConvention.Cdecl)]
        private static extern IntPtr qorVersion();
    }
}
