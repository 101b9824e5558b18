import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.StandardOpenOption;

/** Notes in the file named by its third argument that it has started and whether its shutdown hook ran. */
public class Hooked {
    public static void main(String[] args) throws Exception {
        Path log = Path.of(args[2]);
        Runtime.getRuntime().addShutdownHook(new Thread(() -> note(log, "hook")));
        // Whoever waits for the file finds the line in it.
        Path written = Files.writeString(Path.of(log + ".new"), "started\n");
        Files.move(written, log);
        if (args[3].equals("stay")) {
            Thread.sleep(60_000);
        } else if (args[3].equals("input")) {
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
