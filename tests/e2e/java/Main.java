import java.io.FileInputStream;
import java.io.InputStream;
import java.lang.reflect.Method;
import java.nio.charset.StandardCharsets;
import java.util.Arrays;
import java.util.LinkedHashMap;
import java.util.Map;
import java.util.Properties;
import java.util.stream.Collectors;

/**
 * Does what its third argument says; the first two are the property file of the launcher and the temporary
 * properties that it wrote. Facts are printed as JSON in ASCII, whatever the encoding of the console.
 */
public class Main {
    public static void main(String[] args) throws Exception {
        switch (args[2]) {
            case "facts":
                System.in.transferTo(System.out);
                System.out.println("\nfacts: " + facts(args));
                System.err.println("on standard error");
                System.exit(Runtime.version().feature());
                break;
            case "window":
                Window.show(args[3], Integer.parseInt(args[4]));
                break;
            default:
                System.exit(99);
        }
    }

    private static String facts(String[] args) throws Exception {
        Map<String, String> facts = new LinkedHashMap<>();
        facts.put("arguments", Arrays.stream(args).map(Main::json).collect(Collectors.joining(", ", "[", "]")));
        for (String name : new String[] {"java.version", "user.dir", "java.class.path", "sun.java2d.uiScale.enabled"}) {
            facts.put(name, json(System.getProperty(name)));
        }
        facts.put("maxMemory", Long.toString(Runtime.getRuntime().maxMemory()));
        facts.put("opened", Boolean.toString(
                Object.class.getModule().isOpen("jdk.internal.loader", Main.class.getModule())));
        facts.put("nativeAccess", Boolean.toString(nativeAccess()));
        facts.put("hebrew", json(new java.util.Locale("he").getLanguage()));
        try (InputStream resource = Main.class.getResourceAsStream("/greeting.txt")) {
            facts.put("resource", json(new String(resource.readAllBytes(), StandardCharsets.UTF_8)));
        }
        Properties temporary = new Properties();
        try (InputStream file = new FileInputStream(args[1])) {
            temporary.load(file);
        }
        facts.put("currentVm", json(temporary.getProperty("ryn.nl.current.vm")));
        facts.put("variable", json(temporary.getProperty("ryn.nl.env.exact_case.Probe")));
        facts.put("propertyFileExists", Boolean.toString(new java.io.File(args[0]).isFile()));
        return facts.entrySet().stream().map(fact -> json(fact.getKey()) + ": " + fact.getValue())
                .collect(Collectors.joining(", ", "{", "}"));
    }

    /** Whether restricted methods may be called without a warning; young Javas only. */
    private static boolean nativeAccess() throws Exception {
        try {
            Method method = Module.class.getMethod("isNativeAccessEnabled");
            return (Boolean) method.invoke(Main.class.getModule());
        } catch (NoSuchMethodException e) {
            return false;
        }
    }

    static String json(String text) {
        if (text == null) {
            return "null";
        }
        return text.chars().mapToObj(c -> c >= ' ' && c < 127 && c != '"' && c != '\\' ? String.valueOf((char) c)
                : String.format("\\u%04x", c)).collect(Collectors.joining("", "\"", "\""));
    }
}
