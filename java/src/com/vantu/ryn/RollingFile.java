package com.vantu.ryn;

import java.io.File;
import java.io.FileOutputStream;
import java.io.IOException;
import java.io.OutputStream;

/**
 * Appends to a file. Before it would grow beyond its limit it becomes "name.1", that one "name.2" and so on, the
 * oldest goes, and a new file begins. Lines stay whole unless one is longer than the limit.
 */
final class RollingFile extends OutputStream {
    private final File file;
    private final long limit;
    private final int keep;
    private FileOutputStream out;
    private long size;
    /** Bytes since the last line end. */
    private long lineSize;
    /** Size at which the next attempt is worthwhile, after one that failed. */
    private long rollAt;

    /**
     * @param limit bytes, 0 for none
     * @param keep number of old files
     */
    RollingFile(File file, long limit, int keep) throws IOException {
        this.file = file;
        this.limit = limit;
        this.keep = keep;
        open();
    }

    private void open() throws IOException {
        out = new FileOutputStream(file, true);
        size = file.length();
        rollAt = limit;
    }

    @Override
    public void write(int b) throws IOException {
        write(new byte[] {(byte) b}, 0, 1);
    }

    /** Both standard streams may end here. */
    @Override
    public synchronized void write(byte[] bytes, int offset, int length) throws IOException {
        boolean mayDivide = lineSize == 0 || lineSize + length > limit;
        if (limit > 0 && size > 0 && size + length > rollAt && mayDivide) {
            roll();
        }
        out.write(bytes, offset, length);
        size += length;
        lineSize += length;
        for (int i = length - 1; i >= 0; i--) {
            if (bytes[offset + i] == '\n') {
                lineSize = length - 1 - i;
                break;
            }
        }
    }

    private void roll() throws IOException {
        out.close();
        if (keep > 0) {
            numbered(keep).delete();
            for (int i = keep - 1; i > 0; i--) {
                numbered(i).renameTo(numbered(i + 1));
            }
        }
        boolean moved = keep > 0 ? file.renameTo(numbered(1)) : file.delete();
        open();
        if (!moved) {
            // Another process has it open. It grows on, and is not tried at every line.
            rollAt = size + limit;
        }
    }

    private File numbered(int number) {
        return new File(file.getPath() + '.' + number);
    }

    @Override
    public synchronized void close() throws IOException {
        out.close();
    }
}
