using System.Reflection;

[assembly: AssemblyTitle("DotnetSettings")]
[assembly: AssemblyVersion("1.0.0.0")]
