using System;
using System.IO;
using System.Linq;
using Zuvy.Qor;

namespace DotnetSettings
{
    /// <summary>Grabs as many frames as the camera.config beside the program says.</summary>
    internal static class Program
    {
        private static void Main()
        {
            string folder = AppDomain.CurrentDomain.BaseDirectory;
            var settings = File.ReadAllLines(Path.Combine(folder, "camera.config"))
                .Select(line => line.Split('='))
                .ToDictionary(pair => pair[0], pair => int.Parse(pair[1]));

            using (var camera = new Camera(settings["index"]))
            {
                for (int number = 0; number < settings["frames"]; ++number)
                {
                    Frame frame = camera.Grab();
                    Console.WriteLine("Frame {0}: {1} x {2}", number, frame.Width, frame.Height);
                }
            }
        }
    }
}
