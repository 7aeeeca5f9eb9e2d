using System.Reflection;

[assembly: AssemblyTitle("DotnetGrab")]
[assembly: AssemblyVersion("1.0.0.0")]
