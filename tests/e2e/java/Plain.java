import java.util.Arrays;
import java.util.stream.Collectors;

/** A program that knows nothing of the launcher; prints what it was given as JSON in ASCII. */
public class Plain {
    public static void main(String[] args) {
        System.out.println("{\"arguments\": " + array(args) + ", \"properties\": {"
                + System.getProperties().stringPropertyNames().stream()
                        .map(name -> Main.json(name) + ": " + Main.json(System.getProperty(name)))
                        .collect(Collectors.joining(", ")) + "}}");
    }

    private static String array(String[] texts) {
        return Arrays.stream(texts).map(Main::json).collect(Collectors.joining(", ", "[", "]"));
    }
}
