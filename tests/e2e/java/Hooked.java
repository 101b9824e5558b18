import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.StandardOpenOption;

/** Notes in the file named by its last argument but one that it has started and whether its shutdown hook ran. */
public class Hooked {
    public static void main(String[] args) throws Exception {
        Path log = Path.of(args[args.length - 2]);
        String how = args[args.length - 1];
        Runtime.getRuntime().addShutdownHook(new Thread(() -> note(log, "hook")));
        // Whoever waits for the file finds the line in it.
        Path written = Files.writeString(Path.of(log + ".new"), "started\n");
        Files.move(written, log);
        if (how.equals("stay")) {
            Thread.sleep(60_000);
        } else if (how.equals("input")) {
            System.in.read();
        }
    }

    private static void note(Path log, String line) {
        try {
            Files.writeString(log, line + "\n", StandardOpenOption.CREATE, StandardOpenOption.APPEND);
        } catch (java.io.IOException e) {
            throw new java.io.UncheckedIOException(e);
        }
    }
}
