package com.vantu.ryn;

import java.io.DataInputStream;
import java.io.File;
import java.io.FileInputStream;
import java.io.IOException;
import java.util.HashMap;
import java.util.Map;

/**
 * Reads {@code .ryn} files as the launcher does, which is not as {@link java.util.Properties} does: bytes are
 * characters, only "=" separates, no line continues another, and of all escapes only "&#92;u" is known.
 */
final class PropertyFile {
    /** What the launcher's reader finds behind a last line that has no line end. */
    private static final char END_OF_FILE = '\uFFFF';

    private PropertyFile() {}

    static Map<String, String> read(File file) throws IOException {
        byte[] bytes = new byte[(int) file.length()];
        DataInputStream in = new DataInputStream(new FileInputStream(file));
        try {
            in.readFully(bytes);
        } finally {
            in.close();
        }
        return parse(new String(bytes, "ISO-8859-1"));
    }

    /** The last of several values of a key counts. */
    static Map<String, String> parse(String text) {
        Map<String, String> entries = new HashMap<String, String>();
        int start = 0;
        for (int end = text.indexOf('\n'); end >= 0; end = text.indexOf('\n', start)) {
            parseLine(text.substring(start, end), entries);
            start = end + 1;
        }
        parseLine(text.substring(start) + END_OF_FILE, entries);
        return entries;
    }

    private static void parseLine(String raw, Map<String, String> entries) {
        if (raw.startsWith("#")) {
            return;
        }
        // trim() takes away what the launcher does: everything up to U+0020.
        String line = raw.trim();
        int separator = line.indexOf('=');
        if (separator < 0) {
            return;
        }
        String value = line.substring(separator + 1).trim();
        if (value.endsWith("\\")) {
            value = value.substring(0, value.length() - 1) + ' ';
        }
        entries.put(unescape(line.substring(0, separator).trim()), unescape(value));
    }

    private static String unescape(String text) {
        if (text.indexOf('\\') < 0) {
            return text;
        }
        StringBuilder result = new StringBuilder(text.length());
        int at = 0;
        while (at < text.length()) {
            char c = text.charAt(at++);
            result.append(c);
            if (c != '\\' || at == text.length()) {
                continue;
            }
            char escaped = text.charAt(at++);
            if (escaped != 'u') {
                result.append(escaped);
                continue;
            }
            int code = 0;
            for (int digits = 0; digits < 4 && at < text.length() && hexValue(text.charAt(at)) >= 0; digits++) {
                code = code * 16 + hexValue(text.charAt(at++));
            }
            result.setCharAt(result.length() - 1, (char) code);
        }
        return result.toString();
    }

    /** Not Character.digit(), which knows digits of other scripts, too. */
    private static int hexValue(char c) {
        return c < 128 ? Character.digit(c, 16) : -1;
    }
}
