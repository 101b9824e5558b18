import java.io.File;
import java.util.function.BiConsumer;

/** Does what its first argument says, and shows what it was given. */
public class Probe {
    static class Broken {
        static final int VALUE = Integer.parseInt("none");
    }

    public static void main(String[] args) throws Exception {
        switch (args.length == 0 ? "arguments" : args[0]) {
            case "properties":
                for (int i = 1; i < args.length; i++) {
                    System.out.println(args[i] + "=" + System.getProperty(args[i]));
                }
                break;
            case "loaders":
                ClassLoader context = Thread.currentThread().getContextClassLoader();
                System.out.println(Probe.class.getClassLoader() == ClassLoader.getSystemClassLoader());
                System.out.println(Probe.class.getClassLoader() == context);
                System.out.println(Class.forName("Beside", true, context).getName());
                break;
            case "lines":
                for (int i = 0; i < Integer.parseInt(args[1]); i++) {
                    (i % 2 == 0 ? System.out : System.err).println("grüße " + i);
                }
                break;
            case "exit":
                System.exit(Integer.parseInt(args[1]));
                break;
            case "throw":
                try {
                    throw new IllegalStateException("inner");
                } catch (IllegalStateException e) {
                    throw new Exception("outer ü", e);
                }
            case "broken":
                System.out.println(Broken.VALUE);
                break;
            case "input":
                System.out.println(System.in.read());
                break;
            case "serve":
                Runtime.getRuntime().addShutdownHook(new Thread(() -> System.out.println("hook")));
                System.out.println("started");
                System.out.println(System.in.read());
                Thread.sleep(60_000);
                break;
            case "listen":
                System.out.println("started");
                System.in.read();
                System.getProperties().put("ryn.start.listener", (BiConsumer<String[], String>) (given, folder) ->
                        System.out.println(String.join("|", given) + " in " + new File(folder).getName()));
                Thread.sleep(60_000);
                break;
            default:
                System.out.println(String.join("|", args));
        }
    }
}
