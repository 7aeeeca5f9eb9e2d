using System.Reflection;

[assembly: AssemblyTitle("DotnetInfo")]
[assembly: AssemblyVersion("1.0.0.0")]
