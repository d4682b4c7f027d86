// Prints what facts.py describes, of the assembly's own declarations; a function or callback that is not
// stdcall is left out.
using System;
using System.Linq;
using System.Reflection;
using System.Runtime.InteropServices;

static class Facts
{
    static string Letter(Type type)
    {
        if (type == typeof(void))
        {
            return "v";
        }
        if (!type.IsPrimitive || type == typeof(IntPtr))
        {
            return "p";
        }
        string kind = type == typeof(double) ? "f" : type.Name.StartsWith("U") ? "u" : "i";
        return kind + Marshal.SizeOf(type);
    }

    static string Signature(MethodInfo method)
    {
        return string.Join(" ", new[] { method.ReturnType }.Concat(method.GetParameters()
            .Select(parameter => parameter.ParameterType)).Select(Letter));
    }

    static void Structure(Type type)
    {
        Console.WriteLine("struct {0} {1}", type.Name, Marshal.SizeOf(type));
        foreach (FieldInfo field in type.GetFields())
        {
            var array = field.GetCustomAttribute<MarshalAsAttribute>();
            int size = array != null ? array.SizeConst : Marshal.SizeOf(field.FieldType);
            Console.WriteLine("member {0}.{1} {2} {3}", type.Name, field.Name,
                Marshal.OffsetOf(type, field.Name), size);
        }
    }

    static void Main()
    {
        foreach (Type type in typeof(Facts).Assembly.GetTypes().Where(type => type.Namespace == "Marvo"))
        {
            var convention = type.GetCustomAttribute<UnmanagedFunctionPointerAttribute>();
            if (type.IsEnum)
            {
                foreach (object value in Enum.GetValues(type))
                {
                    Console.WriteLine("const {0} {1}", value, (int)value);
                }
            }
            else if (type.IsValueType)
            {
                Structure(type);
            }
            else if (convention != null && convention.CallingConvention == CallingConvention.StdCall)
            {
                Console.WriteLine("callback {0} {1}", type.Name, Signature(type.GetMethod("Invoke")));
            }
        }
        foreach (FieldInfo field in typeof(Marvo.Native).GetFields())
        {
            Console.WriteLine("const {0} {1}", field.Name, field.GetValue(null));
        }
        foreach (MethodInfo method in typeof(Marvo.Native).GetMethods())
        {
            var import = method.GetCustomAttribute<DllImportAttribute>();
            if (import != null && import.CallingConvention == CallingConvention.StdCall
                && import.Value == "marvo.dll")
            {
                Console.WriteLine("function {0} {1}", import.EntryPoint, Signature(method));
            }
        }
    }
}
