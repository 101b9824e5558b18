package com.vantu.ryn;

/** Why the program cannot be started: one sentence with the path that was tried. */
final class CannotStart extends Exception {
    private static final long serialVersionUID = 1;

    CannotStart(String sentence) {
        super(sentence);
    }
}
