package com.vantu.ryn;

import java.io.BufferedOutputStream;
import java.io.File;
import java.io.IOException;
import java.io.PrintStream;

/** The files that take the place of standard output and standard error. */
final class Logs {
    private static final String OUTPUT_KEY = "ryn.stdout.redirect";
    private static final String ERROR_KEY = "ryn.stderr.redirect";

    /** Where the launcher's own standard error goes. */
    private final PrintStream standardError = System.err;
    private final Launch launch;
    private File outputFile;
    private File errorFile;

    private Logs(Launch launch) {
        this.launch = launch;
    }

    /** Redirects what the property file wants redirected. A file that cannot be opened is told and left out. */
    static Logs open(Launch launch) {
        Logs logs = new Logs(launch);
        RollingFile output = null;
        logs.outputFile = logs.find(OUTPUT_KEY);
        if (logs.outputFile != null) {
            output = logs.openFile(OUTPUT_KEY, logs.outputFile);
            if (output == null) {
                logs.outputFile = null;
            } else {
                System.setOut(logs.stream(output));
            }
        }
        logs.errorFile = logs.find(ERROR_KEY);
        if (logs.errorFile != null) {
            RollingFile error = logs.errorFile.equals(logs.outputFile) ? output : logs.openFile(ERROR_KEY, logs.errorFile);
            if (error == null) {
                logs.errorFile = null;
            } else {
                System.setErr(logs.stream(error));
            }
        }
        if (logs.file() != null) {
            System.setProperty("ryn.launch.log", logs.file().getPath());
        }
        return logs;
    }

    /** Where errors are written down, else output; null when neither is. */
    File file() {
        return errorFile != null ? errorFile : outputFile;
    }

    /** Writes to standard error and to the log, if there is one. */
    void tell(String text) {
        standardError.println(text);
        if (errorFile != null) {
            System.err.println(text);
        } else if (outputFile != null) {
            System.out.println(text);
        }
    }

    private File find(String key) {
        // The launcher says "console" for this launch when somebody held Ctrl, whatever the property file says.
        String value = launch.fact(key);
        if (value == null) {
            value = launch.setting(key);
        }
        return value.isEmpty() || value.equalsIgnoreCase("console") ? null : launch.resolve(expand(value));
    }

    private RollingFile openFile(String key, File file) {
        File folder = file.getParentFile();
        if (folder != null) {
            folder.mkdirs();
        }
        try {
            return new RollingFile(file, launch.size("ryn.start.log.size"), launch.count("ryn.start.log.keep", 3));
        } catch (IOException e) {
            // Says the path as well.
            standardError.println(key + " is left out, the file cannot be opened: " + e.getMessage());
            return null;
        }
    }

    private PrintStream stream(RollingFile file) {
        try {
            return new PrintStream(new BufferedOutputStream(file), true, "UTF-8");
        } catch (java.io.UnsupportedEncodingException e) {
            throw new AssertionError(e);
        }
    }

    /** Replaces each %NAME% by the variable; one that is not defined stays as it is. */
    static String expand(String text) {
        StringBuilder result = new StringBuilder();
        int at = 0;
        while (true) {
            int begin = text.indexOf('%', at);
            int end = begin < 0 ? -1 : text.indexOf('%', begin + 1);
            if (end < 0) {
                return result.append(text, at, text.length()).toString();
            }
            String value = end == begin + 1 ? null : System.getenv(text.substring(begin + 1, end));
            if (value == null) {
                // The second one may begin the next name.
                result.append(text, at, end);
                at = end;
            } else {
                result.append(text, at, begin).append(value);
                at = end + 1;
            }
        }
    }
}
