using System;
using System.Globalization;
using Zuvy.Qor;

namespace DotnetGrab
{
    /// <summary>Grabs three frames from the first camera and prints their mean.</summary>
    internal static class Program
    {
        private static void Main()
        {
            using (var camera = new Camera(0))
            {
                Console.WriteLine("{0}, serial {1}", camera.Name, camera.Serial);
                for (int number = 0; number < 3; ++number)
                    Console.WriteLine(string.Format(CultureInfo.InvariantCulture,
                        "Frame {0}: mean {1:F2}", number, camera.Grab().Mean));
            }
        }
    }
}
