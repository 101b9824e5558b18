package com.vantu.ryn;

import java.io.File;
import java.io.FileInputStream;
import java.io.IOException;
import java.util.Arrays;
import java.util.Map;
import java.util.Properties;

/** What the launcher told: its property file, the facts of this launch, the program's arguments. */
final class Launch {
    final File ryn;
    final String[] arguments;
    private final Map<String, String> settings;
    private final Properties facts;

    private Launch(File ryn, Map<String, String> settings, Properties facts, String[] arguments) {
        this.ryn = ryn;
        this.settings = settings;
        this.facts = facts;
        this.arguments = arguments;
    }

    /** Reads both files that the first two arguments name, and deletes the temporary one. */
    static Launch read(String[] given) throws CannotStart {
        if (given.length < 2) {
            throw new CannotStart("com.vantu.ryn.Start needs the path of a .ryn file and that of a temporary properties"
                    + " file in front of the program's arguments.");
        }
        Properties facts = readFacts(given[1]);
        File ryn = new File(facts.getProperty("ryn.launch.file", given[0])).getAbsoluteFile();
        Map<String, String> settings;
        try {
            settings = PropertyFile.read(ryn);
        } catch (IOException e) {
            throw new CannotStart("The file " + ryn + " cannot be read: " + e.getMessage());
        }
        String line = facts.getProperty("ryn.launch.command.line");
        String[] arguments = line == null ? Arrays.copyOfRange(given, 2, given.length)
                : CommandLine.programArguments(line);
        return new Launch(ryn, settings, facts, arguments);
    }

    private static Properties readFacts(String path) {
        Properties facts = new Properties();
        if (path.isEmpty()) {
            return facts;
        }
        File file = findFacts(path);
        try {
            FileInputStream in = new FileInputStream(file);
            try {
                facts.load(in);
            } finally {
                in.close();
            }
        } catch (IOException e) {
            System.err.println("The facts of the launch cannot be read: " + e.getMessage());
        } catch (IllegalArgumentException e) {
            System.err.println("The facts of the launch in " + file + " are damaged: " + e.getMessage());
        }
        // It holds the user's whole environment. A virus scanner may keep it open for a moment.
        if (!file.delete() && file.exists()) {
            file.deleteOnExit();
        }
        return facts;
    }

    /**
     * A path that the ANSI code page cannot write comes damaged as an argument and whole in the environment. There
     * it may also be left from a launcher further up, whose program started this one: then the name is another.
     */
    private static File findFacts(String path) {
        File file = new File(path);
        String exact = file.exists() ? null : System.getenv("RYN_LAUNCH_PROPERTIES");
        if (exact != null) {
            File named = new File(exact);
            if (named.isFile() && named.getName().equalsIgnoreCase(file.getName())) {
                return named;
            }
        }
        return file;
    }

    /** Puts what a program may want to know into system properties; what is not known stays unset. */
    void publish() {
        publish("ryn.launch.file", ryn.getPath());
        publish("ryn.launch.program", fact("ryn.launch.program"));
        publish("ryn.launch.start.folder", fact("ryn.launch.start.folder"));
        publish("ryn.launch.vm", fact("ryn.nl.current.vm"));
        publish("ryn.launch.service", fact("ryn.launch.service"));
        publish("ryn.launch.console", fact("ryn.launch.console"));
    }

    private static void publish(String name, String value) {
        if (value != null) {
            System.setProperty(name, value);
        }
    }

    /** A fact of this launch, or null. */
    String fact(String key) {
        return facts.getProperty(key);
    }

    /** False also when the launcher said nothing. */
    boolean factIs(String key, String value) {
        return value.equals(facts.getProperty(key));
    }

    /** A value of the property file, "" when there is none. */
    String setting(String key) {
        String value = settings.get(key);
        if (value == null) {
            return "";
        }
        // Left by a last line without its end: no path, name or number of ours can mean it.
        return value.endsWith("\uFFFF") ? value.substring(0, value.length() - 1).trim() : value;
    }

    boolean isOn(String key) {
        String value = setting(key);
        return value.equalsIgnoreCase("true") || value.equalsIgnoreCase("yes") || value.equalsIgnoreCase("on");
    }

    /** Bytes, with the suffixes "k" and "m"; 0 when there is no number. */
    long size(String key) {
        String value = setting(key);
        long unit = 1;
        if (value.endsWith("k") || value.endsWith("K")) {
            unit = 1024;
        } else if (value.endsWith("m") || value.endsWith("M")) {
            unit = 1048576;
        }
        return unit * number(value, 0);
    }

    int count(String key, int otherwise) {
        return (int) Math.min(1000, number(setting(key), otherwise));
    }

    /** The decimal digits at the start of the text. */
    private static long number(String text, long otherwise) {
        long result = 0;
        int digits = 0;
        while (digits < text.length() && digits < 12 && text.charAt(digits) >= '0' && text.charAt(digits) <= '9') {
            result = result * 10 + (text.charAt(digits++) - '0');
        }
        return digits == 0 ? otherwise : result;
    }

    /** A path of the property file: relative ones count from its folder, by the launcher's rule. */
    File resolve(String path) {
        boolean absolute = path.startsWith("\\") || path.length() > 1 && path.charAt(1) == ':'
                || new File(path).isAbsolute();
        return absolute ? new File(path) : new File(ryn.getParentFile(), path);
    }

    /** What a user calls the program. */
    String applicationName() {
        String name = setting("ryn.application.name");
        return name.isEmpty() ? baseName() : name;
    }

    /** The name of the property file without its extension. */
    String baseName() {
        String name = ryn.getName();
        int dot = name.lastIndexOf('.');
        return dot > 0 ? name.substring(0, dot) : name;
    }
}
