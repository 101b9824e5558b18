package hello;

import java.io.FileDescriptor;
import java.io.FileOutputStream;
import java.io.IOException;
import java.io.PrintStream;

/** Shows what an application learns from its launcher, and ends with the code that it is told to. */
public final class Hello {
    private Hello() {}

    public static void main(String[] args) throws IOException {
        // Windows has no UTF-8 output by default, and the umlauts are half the fun.
        PrintStream out = new PrintStream(new FileOutputStream(FileDescriptor.out), true, "UTF-8");

        out.println("Hello from " + System.getProperty("java.vm.name") + " " + System.getProperty("java.version")
                + " on " + System.getProperty("os.name"));
        for (String key : new String[] {"ryn.launch.file", "ryn.launch.vm", "ryn.launch.start.folder"}) {
            out.printf("  %-24s %s%n", key, System.getProperty(key));
        }
        out.printf("  %-24s %s%n", "variable Greeting", System.getenv("Greeting"));
        int exitCode = 0;
        for (int i = 0; i < args.length; i++) {
            out.printf("  argument %-15d [%s]%n", i + 1, args[i]);
            if (args[i].startsWith("exit=")) {
                exitCode = Integer.parseInt(args[i].substring("exit=".length()));
            }
        }
        System.exit(exitCode);
    }
}
