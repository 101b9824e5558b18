package com.vantu.ryn;

import java.io.IOException;
import java.io.InputStream;

/**
 * Standard input of a service: nothing comes through it, and its end means stop. The program reads this stream
 * instead, because on Windows a second reader, and even a question for what is available, waits for the first.
 */
final class StopInput extends InputStream implements Runnable {
    private final InputStream pipe;
    private boolean ended;

    private StopInput(InputStream pipe) {
        this.pipe = pipe;
    }

    static void watch() {
        StopInput input = new StopInput(System.in);
        System.setIn(input);
        Thread thread = new Thread(input, "ryn stop");
        thread.setDaemon(true);
        thread.start();
    }

    @Override
    public void run() {
        try {
            while (pipe.read() >= 0) {
                continue;
            }
        } catch (IOException e) {
            // No input at all is not the launcher's word to stop.
            return;
        }
        synchronized (this) {
            ended = true;
            notifyAll();
        }
        System.exit(0);
    }

    @Override
    public synchronized int read() throws IOException {
        try {
            while (!ended) {
                wait();
            }
        } catch (InterruptedException e) {
            Thread.currentThread().interrupt();
            throw new java.io.InterruptedIOException();
        }
        return -1;
    }

    @Override
    public int read(byte[] bytes, int offset, int length) throws IOException {
        return length == 0 ? 0 : read();
    }
}
