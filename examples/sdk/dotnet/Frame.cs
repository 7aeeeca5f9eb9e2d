using System.Linq;

namespace Zuvy.Qor
{
    /// <summary>One 8-bit mono image, rows from top to bottom without padding.</summary>
    public sealed class Frame
    {
        public Frame(int width, int height)
        {
            Width = width;
            Height = height;
            Pixels = new byte[width * height];
        }

        public int Width { get; }
        public int Height { get; }
        public byte[] Pixels { get; }

        public double Mean
        {
            get { return Pixels.Average(pixel => (double)pixel); }
        }
    }
}
