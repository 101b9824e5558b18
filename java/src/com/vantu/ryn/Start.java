package com.vantu.ryn;

import java.io.File;

/**
 * Main class of applications that were not written for the launcher: takes its two arguments away, makes of what it
 * tells what the property file asks for, and runs the program's own main method. Every class here is plain Java
 * without lambdas, regular expressions or formatting, each of which costs milliseconds at the start.
 */
public final class Start {
    private Start() {}

    /**
     * @param args path of the launcher's property file, path of the temporary properties file, the program's arguments
     */
    public static void main(String[] args) throws Throwable {
        Launch launch = null;
        Logs logs = null;
        Program program;
        try {
            launch = Launch.read(args);
            launch.publish();
            CannotStart unanswered = null;
            if (launch.isOn("ryn.start.single.instance")) {
                try {
                    if (!SingleInstance.isFirst(launch)) {
                        return;
                    }
                } catch (CannotStart e) {
                    unanswered = e;
                }
            }
            // Only now: a start that is handed over has no business in the files of the first.
            logs = Logs.open(launch);
            if (unanswered != null) {
                throw unanswered;
            }
            if (launch.factIs("ryn.launch.stop.input", "true")) {
                StopInput.watch();
            }
            program = Program.find(launch);
        } catch (CannotStart e) {
            tell(e, launch, logs);
            System.exit(1);
            return;
        }
        program.run(launch.arguments);
    }

    private static void tell(CannotStart failure, Launch launch, Logs logs) {
        if (launch == null) {
            System.err.println(failure.getMessage());
            return;
        }
        String vm = launch.fact("ryn.nl.current.vm");
        String nl = System.lineSeparator();
        StringBuilder text = new StringBuilder(launch.applicationName()).append(" could not be started.").append(nl);
        text.append(failure.getMessage()).append(nl);
        text.append("Settings: ").append(launch.ryn).append(nl);
        text.append("Java: ").append(System.getProperty("java.version")).append(", ")
                .append(vm != null ? vm : System.getProperty("java.home"));
        File log = logs.file();
        if (log != null) {
            text.append(nl).append("Log: ").append(log);
        }
        logs.tell(text.toString());
        // Nobody could press the button of a service's box; without the launcher's word it may be one.
        if (log == null && launch.factIs("ryn.launch.service", "false") && launch.factIs("ryn.launch.console", "false")) {
            try {
                FailureBox.show(launch.applicationName(), text.toString());
            } catch (Throwable e) {
                // No desktop, or a VM without one: it has been told.
                return;
            }
        }
    }
}
