package com.vantu.ryn;

import java.io.File;
import java.io.PrintStream;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Paths;
import java.util.Map;
import java.util.TreeMap;

/** Shows the parts that many cases are put to in one VM; fields are separated by U+001F, UTF-8 in and out. */
public class Driver {
    public static void main(String[] args) throws Exception {
        PrintStream out = new PrintStream(System.out, false, "UTF-8");
        if (args[0].equals("properties")) {
            for (Map.Entry<String, String> entry : new TreeMap<>(PropertyFile.read(new File(args[1]))).entrySet()) {
                out.println(entry.getKey() + '\u001f' + entry.getValue());
            }
        } else {
            for (String line : Files.readAllLines(Paths.get(args[1]), StandardCharsets.UTF_8)) {
                out.println(String.join("\u001f", CommandLine.programArguments(line)));
            }
        }
        out.flush();
    }
}
