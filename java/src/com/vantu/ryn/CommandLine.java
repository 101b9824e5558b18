package com.vantu.ryn;

import java.util.ArrayList;
import java.util.List;

/**
 * The launcher's whole command line, divided as the C runtime of Visual Studio has done it since 2008 and as
 * java.exe does it: blanks and tabs separate outside quotes; backslashes are themselves but in front of a quote,
 * where two stand for one and an odd one makes the quote a character; within quotes two quotes are one.
 * https://learn.microsoft.com/cpp/c-language/parsing-c-command-line-arguments
 */
final class CommandLine {
    private final String line;
    private int at;
    /** The argument that was read last, as it was written. */
    private String written;
    private String value;

    private CommandLine(String line) {
        this.line = line;
    }

    /** What the program is meant to get: neither the launcher's own path nor the launcher's switches. */
    static String[] programArguments(String line) {
        CommandLine reader = new CommandLine(line);
        reader.skipProgram();
        List<String> arguments = new ArrayList<String>();
        reader.collect(arguments);
        return arguments.toArray(new String[0]);
    }

    /** Goes as the launcher does: "-i" takes the next word along, and only "-tempdir" is then known of it. */
    private void collect(List<String> arguments) {
        while (next()) {
            if (isSwitch("-tqrynservice")) {
                next();
                continue;
            }
            if (isSwitch("-i")) {
                if (!next()) {
                    arguments.add("-i");
                    return;
                }
                if (isSwitch("console")) {
                    continue;
                }
                arguments.add("-i");
            }
            if (isSwitch("-tempdir")) {
                if (!next()) {
                    arguments.add("-tempdir");
                    return;
                }
                continue;
            }
            arguments.add(value);
        }
    }

    /** The launcher knows its switches without quotes only. */
    private boolean isSwitch(String name) {
        return written.equals(name);
    }

    /** In the program's path backslashes are nothing special. */
    private void skipProgram() {
        boolean quoted = false;
        while (at < line.length() && (quoted || !isBlank(line.charAt(at)))) {
            if (line.charAt(at++) == '"') {
                quoted = !quoted;
            }
        }
    }

    private boolean next() {
        while (at < line.length() && isBlank(line.charAt(at))) {
            at++;
        }
        if (at == line.length()) {
            return false;
        }
        int start = at;
        StringBuilder text = new StringBuilder();
        boolean quoted = false;
        while (at < line.length() && (quoted || !isBlank(line.charAt(at)))) {
            char c = line.charAt(at++);
            if (c == '\\') {
                readBackslashes(text);
            } else if (c != '"') {
                text.append(c);
            } else if (quoted && at < line.length() && line.charAt(at) == '"') {
                text.append('"');
                at++;
            } else {
                quoted = !quoted;
            }
        }
        written = line.substring(start, at);
        value = text.toString();
        return true;
    }

    /** Behind the first of them; leaves a quote that opens or closes to be read. */
    private void readBackslashes(StringBuilder text) {
        int count = 1;
        while (at < line.length() && line.charAt(at) == '\\') {
            at++;
            count++;
        }
        boolean beforeQuote = at < line.length() && line.charAt(at) == '"';
        for (int i = 0; i < (beforeQuote ? count / 2 : count); i++) {
            text.append('\\');
        }
        if (beforeQuote && count % 2 == 1) {
            text.append('"');
            at++;
        }
    }

    private static boolean isBlank(char c) {
        return c == ' ' || c == '\t';
    }
}
