package com.vantu.ryn;

import java.io.BufferedInputStream;
import java.io.BufferedOutputStream;
import java.io.DataInputStream;
import java.io.DataOutputStream;
import java.io.File;
import java.io.FileInputStream;
import java.io.FileOutputStream;
import java.io.IOException;
import java.io.RandomAccessFile;
import java.net.InetAddress;
import java.net.InetSocketAddress;
import java.net.Proxy;
import java.net.ServerSocket;
import java.net.Socket;
import java.nio.channels.FileLock;
import java.util.Arrays;
import java.util.Locale;
import java.util.concurrent.LinkedBlockingQueue;
import java.util.concurrent.TimeUnit;
import java.util.function.BiConsumer;

/**
 * The first start of an application holds a lock, which Windows takes back however the process ends. Later ones
 * lay what they have to say into a folder of the user's own and ring at the port that stands there. Nothing goes
 * through the port but the ring: other users of the machine could reach it, and they can neither read nor say anything.
 */
final class SingleInstance {
    private static final String LISTENER_KEY = "ryn.start.listener";
    private static final String MESSAGE = ".args";
    private static final int ANSWER_MS = 5000;
    private static final long PATIENCE_MS = 10000;
    private static final int RETRY_MS = 50;
    /** More than the longest command line of Windows. */
    private static final int MAX_CHARACTERS = 65536;

    /** Both are for the life of the process. */
    private static RandomAccessFile lockFile;
    private static FileLock lock;

    private final File folder;
    /** Of all files of this application. */
    private final String prefix;
    private final File address;
    private final LinkedBlockingQueue<Message> messages = new LinkedBlockingQueue<Message>();

    private SingleInstance(File folder, String prefix) {
        this.folder = folder;
        this.prefix = prefix;
        this.address = new File(folder, prefix + ".port");
    }

    /** Arguments of a later start and the folder in which it was started. */
    private static final class Message {
        final String[] arguments;
        final String folder;

        Message(String[] arguments, String folder) {
            this.arguments = arguments;
            this.folder = folder;
        }
    }

    /** False when another process has taken the arguments over. */
    static boolean isFirst(Launch launch) throws CannotStart {
        File folder = stateFolder();
        folder.mkdirs();
        String prefix = launch.baseName() + '-' + Long.toHexString(hash(canonicalPath(launch.ryn)));
        SingleInstance instance = new SingleInstance(folder, prefix);
        File lockPath = new File(folder, prefix + ".lock");
        long end = System.nanoTime() + TimeUnit.MILLISECONDS.toNanos(PATIENCE_MS);
        while (true) {
            try {
                if (takeLock(lockPath)) {
                    // What is there is from one that was ended.
                    new FileOutputStream(instance.address).close();
                    instance.listen();
                    return true;
                }
            } catch (IOException e) {
                System.err.println("Other instances cannot be told from this one, " + lockPath + " cannot be locked: "
                        + e.getMessage());
                return true;
            }
            String reason;
            try {
                if (instance.handOver(launch)) {
                    return false;
                }
                reason = "nobody takes the arguments";
            } catch (IOException e) {
                reason = e.getMessage();
            }
            // Not listening yet, or on its way out: then the lock will soon be free.
            if (System.nanoTime() - end > 0) {
                throw new CannotStart("It runs already and does not answer at the port in " + instance.address + ": "
                        + reason);
            }
            try {
                Thread.sleep(RETRY_MS);
            } catch (InterruptedException e) {
                throw new CannotStart("The wait for " + lockPath + " was interrupted.");
            }
        }
    }

    private static File stateFolder() {
        String local = System.getenv("LOCALAPPDATA");
        return local == null || local.isEmpty() ? new File(System.getProperty("user.home"), ".ryn")
                : new File(local, "ryn");
    }

    private static String canonicalPath(File file) {
        String path = file.getPath();
        try {
            path = file.getCanonicalPath();
        } catch (IOException e) {
            // As it is, then.
        }
        return File.separatorChar == '\\' ? path.toLowerCase(Locale.ROOT) : path;
    }

    /** FNV-1a over the characters: a digest would load the security providers. */
    private static long hash(String text) {
        long hash = 0xcbf29ce484222325L;
        for (int i = 0; i < text.length(); i++) {
            hash = (hash ^ text.charAt(i)) * 0x100000001b3L;
        }
        return hash;
    }

    private static boolean takeLock(File path) throws IOException {
        RandomAccessFile file = new RandomAccessFile(path, "rw");
        FileLock taken = null;
        try {
            taken = file.getChannel().tryLock();
        } finally {
            if (taken == null) {
                file.close();
            }
        }
        lockFile = file;
        lock = taken;
        return taken != null;
    }

    private static InetAddress loopback() throws IOException {
        return InetAddress.getByAddress(new byte[] {127, 0, 0, 1});
    }

    /** Whether it was taken. What is not is withdrawn: whoever deletes the file has the message. */
    private boolean handOver(Launch launch) throws IOException {
        int port = readPort();
        File message = writeMessage(launch);
        try {
            ring(port);
        } catch (IOException e) {
            if (message.delete()) {
                throw e;
            }
            return true;
        }
        return !message.delete();
    }

    private int readPort() throws IOException {
        DataInputStream in = new DataInputStream(new FileInputStream(address));
        try {
            return in.readUnsignedShort();
        } finally {
            in.close();
        }
    }

    private static void ring(int port) throws IOException {
        Socket socket = new Socket(Proxy.NO_PROXY);
        try {
            socket.connect(new InetSocketAddress(loopback(), port), ANSWER_MS);
            socket.setSoTimeout(ANSWER_MS);
            // Closed when it has looked.
            socket.getInputStream().read();
        } finally {
            socket.close();
        }
    }

    private File writeMessage(Launch launch) throws IOException {
        File written;
        String name;
        do {
            // In the order of time. File.createTempFile() would load the security providers.
            name = prefix + '.' + Long.toHexString(System.currentTimeMillis()) + '.'
                    + Long.toHexString(System.nanoTime());
            written = new File(folder, name + ".new");
        } while (!written.createNewFile());
        DataOutputStream out = new DataOutputStream(new BufferedOutputStream(new FileOutputStream(written)));
        try {
            String start = launch.fact("ryn.launch.start.folder");
            write(out, start != null ? start : System.getProperty("user.dir"));
            out.writeInt(launch.arguments.length);
            for (int i = 0; i < launch.arguments.length; i++) {
                write(out, launch.arguments[i]);
            }
        } finally {
            out.close();
        }
        // Whoever finds it finds all of it.
        File message = new File(folder, name + MESSAGE);
        if (!written.renameTo(message)) {
            written.delete();
            throw new IOException(written + " cannot be renamed");
        }
        return message;
    }

    /** As UTF-16: names of files may hold what UTF-8 cannot carry. */
    private static void write(DataOutputStream out, String text) throws IOException {
        out.writeInt(text.length());
        out.writeChars(text);
    }

    /** The program need not wait for either thread, and neither keeps it alive. */
    private void listen() {
        start("ryn instances", new Runnable() {
            @Override
            public void run() {
                accept();
            }
        });
        start("ryn listener", new Runnable() {
            @Override
            public void run() {
                deliver();
            }
        });
    }

    private static void start(String name, Runnable work) {
        Thread thread = new Thread(work, name);
        thread.setDaemon(true);
        thread.start();
    }

    private void accept() {
        ServerSocket server = null;
        try {
            server = new ServerSocket(0, 50, loopback());
            closeAtExit(server);
            DataOutputStream out = new DataOutputStream(new FileOutputStream(address));
            out.writeShort(server.getLocalPort());
            out.close();
            while (true) {
                Socket socket = server.accept();
                try {
                    takeMessages();
                } finally {
                    socket.close();
                }
            }
        } catch (IOException e) {
            if (server == null || !server.isClosed()) {
                System.err.println("Later starts cannot be heard: " + e.getMessage());
            }
        }
    }

    /** A program that ends takes nothing over any more: a later start waits for the lock then. */
    private static void closeAtExit(final ServerSocket server) {
        Runtime.getRuntime().addShutdownHook(new Thread("ryn instances end") {
            @Override
            public void run() {
                try {
                    server.close();
                } catch (IOException e) {
                    // The end of the process does it.
                }
            }
        });
    }

    private void takeMessages() {
        String[] names = folder.list();
        if (names == null) {
            return;
        }
        Arrays.sort(names);
        for (String name : names) {
            if (!name.startsWith(prefix + '.') || !name.endsWith(MESSAGE)) {
                continue;
            }
            File file = new File(folder, name);
            boolean stale = System.currentTimeMillis() - file.lastModified() > 2 * PATIENCE_MS;
            try {
                Message message = read(file);
                // Withdrawn, or left by a start that was ended before it could do so.
                if (file.delete() && !stale) {
                    messages.add(message);
                }
            } catch (IOException e) {
                // Withdrawn, too.
                continue;
            }
        }
    }

    private static Message read(File file) throws IOException {
        DataInputStream in = new DataInputStream(new BufferedInputStream(new FileInputStream(file)));
        try {
            String start = readText(in);
            String[] arguments = new String[readLength(in)];
            for (int i = 0; i < arguments.length; i++) {
                arguments[i] = readText(in);
            }
            return new Message(arguments, start);
        } finally {
            in.close();
        }
    }

    private static String readText(DataInputStream in) throws IOException {
        char[] text = new char[readLength(in)];
        for (int i = 0; i < text.length; i++) {
            text[i] = in.readChar();
        }
        return new String(text);
    }

    private static int readLength(DataInputStream in) throws IOException {
        int length = in.readInt();
        if (length < 0 || length > MAX_CHARACTERS) {
            throw new IOException("damaged");
        }
        return length;
    }

    private void deliver() {
        try {
            while (true) {
                Message message = messages.take();
                BiConsumer<String[], String> listener = awaitListener();
                // As in threads that the program has started.
                Thread.currentThread().setContextClassLoader(listener.getClass().getClassLoader());
                try {
                    listener.accept(message.arguments, message.folder);
                } catch (Throwable e) {
                    e.printStackTrace();
                }
            }
        } catch (InterruptedException e) {
            // Nobody interrupts it who does not mean its end.
            return;
        }
    }

    /** System properties do not tell when one is set; there is somebody waiting, so we look. */
    @SuppressWarnings("unchecked")
    private static BiConsumer<String[], String> awaitListener() throws InterruptedException {
        while (true) {
            Object listener = System.getProperties().get(LISTENER_KEY);
            if (listener instanceof BiConsumer) {
                return (BiConsumer<String[], String>) listener;
            }
            Thread.sleep(RETRY_MS);
        }
    }
}
