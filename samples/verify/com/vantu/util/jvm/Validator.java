package com.vantu.util.jvm;

import java.util.Locale;
import java.util.regex.Matcher;
import java.util.regex.Pattern;

/**
 * Tells the launcher whether the VM that runs this class fits a token of {@code ryn.nl.valid.vm.list} that the
 * launcher does not know itself. Exit code 0 accepts, 1 refuses, 2 is a token that makes no sense.
 *
 * <p>A token is one condition, or several joined by commas that must all hold:
 * <pre>
 *   17         version 17 (17.0.9, but not 171)       17.0.9     that update
 *   17+        17 or later                            1.8+       Java 8 or later, old spelling
 *   11-21      11 to 21, every update of 21 included
 *   temurin    the vendor's name contains the word; letter case, blanks and punctuation do not count
 * </pre>
 */
public final class Validator {
    private static final String NUMBER = "\\d{1,9}(?:[._]\\d{1,9})*";
    private static final Pattern RANGE = Pattern.compile("(" + NUMBER + ")(?:(\\+)|-(" + NUMBER + "))?");
    private static final Pattern WORD = Pattern.compile("\\p{L}.*");
    private static final Pattern VERSION = Pattern.compile(NUMBER);

    private Validator() {
    }

    public static void main(String[] arguments) {
        if (arguments.length != 1) {
            System.out.println("expected one token");
            System.exit(2);
        }
        String version = System.getProperty("java.version", "");
        String vendor = System.getProperty("java.vendor", "") + ' ' + System.getProperty("java.vm.vendor", "") + ' '
                + System.getProperty("java.vendor.version", "");
        int result = 0;
        for (String condition : arguments[0].split(",", -1)) {
            if (!RANGE.matcher(condition).matches() && !WORD.matcher(condition).matches()) {
                System.out.println("'" + condition + "' is no condition");
                System.exit(2);
            }
            if (!holds(condition, version, vendor)) {
                System.out.println("'" + condition + "' does not hold");
                result = 1;
            }
        }
        System.out.println((result == 0 ? "accepted: " : "refused: ") + version + ", " + vendor.trim());
        System.exit(result);
    }

    static boolean holds(String condition, String version, String vendor) {
        Matcher range = RANGE.matcher(condition);
        if (!range.matches()) {
            return plain(vendor).contains(plain(condition));
        }
        // What follows the number is a build or "-ea".
        Matcher number = VERSION.matcher(version);
        if (!number.lookingAt()) {
            return false;
        }
        int[] actual = components(number.group());
        int low = compare(actual, components(range.group(1)));
        if (range.group(2) != null) {
            return low >= 0;
        }
        if (range.group(3) != null) {
            return low >= 0 && compare(actual, components(range.group(3))) <= 0;
        }
        return low == 0;
    }

    /** Compares as far as the limit goes, so that 17.0.9 is neither above nor below 17. */
    private static int compare(int[] actual, int[] limit) {
        for (int i = 0; i < limit.length; i++) {
            int difference = Integer.compare(i < actual.length ? actual[i] : 0, limit[i]);
            if (difference != 0) {
                return difference;
            }
        }
        return 0;
    }

    /** The numbers of a version, without the "1." that versions before 9 begin with. */
    private static int[] components(String version) {
        String[] texts = version.replaceFirst("^1[._](?=\\d)", "").split("[._]");
        int[] numbers = new int[texts.length];
        for (int i = 0; i < texts.length; i++) {
            numbers[i] = Integer.parseInt(texts[i]);
        }
        return numbers;
    }

    private static String plain(String text) {
        return text.toLowerCase(Locale.ROOT).replaceAll("[^\\p{L}\\p{N}]", "");
    }
}
