package hello;

import java.io.FileDescriptor;
import java.io.FileOutputStream;
import java.io.IOException;
import java.io.InputStream;
import java.io.PrintStream;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.Paths;
import java.util.Properties;

/** Shows what an application learns from its launcher, and ends with the code that it is told to. */
public final class Hello {
    private Hello() {}

    /**
     * The launcher puts two arguments in front of the application's own.
     *
     * @param args path of the launcher's properties file, path of a temporary properties file with the facts
     *     of this launch, then what the user typed
     */
    public static void main(String[] args) throws IOException {
        Properties launch = readAndRemove(Paths.get(args[1]));
        // Windows has no UTF-8 output by default, and the umlauts are half the fun.
        PrintStream out = new PrintStream(new FileOutputStream(FileDescriptor.out), true, "UTF-8");

        out.println("Hello from " + System.getProperty("java.vm.name") + " " + System.getProperty("java.version")
                + " on " + System.getProperty("os.name"));
        out.println("  properties file                " + args[0]);
        for (String key : new String[] {"ryn.nl.current.vm", "ryn.nl.env.exact_case.Greeting", "ryn.nl.env.greeting"}) {
            out.printf("  %-30s %s%n", key, launch.getProperty(key));
        }
        int exitCode = 0;
        for (int i = 2; i < args.length; i++) {
            out.printf("  argument %-21d [%s]%n", i - 1, args[i]);
            if (args[i].startsWith("exit=")) {
                exitCode = Integer.parseInt(args[i].substring("exit=".length()));
            }
        }
        System.exit(exitCode);
    }

    /** The launcher leaves the file behind, because only we know when it has been read. */
    private static Properties readAndRemove(Path path) throws IOException {
        Properties properties = new Properties();
        try (InputStream in = Files.newInputStream(path)) {
            properties.load(in);
        }
        Files.delete(path);
        return properties;
    }
}
