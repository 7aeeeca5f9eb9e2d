using System;
using DotnetInfo.Native;

namespace DotnetInfo
{
    /// <summary>Prints what the SDK is, calling it without the wrapper.</summary>
    internal static class Program
    {
        private static void Main()
        {
            Console.WriteLine("qorSDK {0}, cameras: {1}", QorSdk.Version, QorSdk.CameraCount());
        }
    }
}
