package com.vantu.ryn;

import java.io.DataInputStream;
import java.io.File;
import java.io.IOException;
import java.io.InputStream;
import java.lang.reflect.Constructor;
import java.lang.reflect.InvocationTargetException;
import java.lang.reflect.Method;
import java.lang.reflect.Modifier;
import java.net.URL;
import java.net.URLClassLoader;
import java.util.Arrays;
import java.util.Collections;
import java.util.IdentityHashMap;
import java.util.Set;
import java.util.jar.Attributes;
import java.util.jar.JarFile;
import java.util.jar.Manifest;

/** The program's main method, and the way to it. */
final class Program {
    private static final String JAR_KEY = "ryn.start.jar";
    private static final String CLASS_KEY = "ryn.start.class";
    private static final String MODULE_KEY = "ryn.start.module";
    /** Class files of Java N have the version N + 44. */
    private static final int CLASS_VERSION_BASE = 44;
    /** The first Java that starts main methods of instances. */
    private static final int INSTANCE_MAIN = 25;

    private final Method main;
    /** Null when the method is static. */
    private final Constructor<?> constructor;

    private Program(Method main, Constructor<?> constructor) {
        this.main = main;
        this.constructor = constructor;
    }

    static Program find(Launch launch) throws CannotStart {
        String jar = launch.setting(JAR_KEY);
        String className = launch.setting(CLASS_KEY);
        String module = launch.setting(MODULE_KEY);
        int given = (jar.isEmpty() ? 0 : 1) + (className.isEmpty() ? 0 : 1) + (module.isEmpty() ? 0 : 1);
        if (given != 1) {
            throw new CannotStart("The file " + launch.ryn + " has " + (given == 0 ? "none" : "more than one") + " of "
                    + JAR_KEY + ", " + CLASS_KEY + " and " + MODULE_KEY + ".");
        }
        if (!jar.isEmpty()) {
            return fromJar(launch.resolve(jar));
        }
        if (!module.isEmpty()) {
            return fromModule(module);
        }
        return fromClass(className, ClassLoader.getSystemClassLoader(),
                "the class path " + System.getProperty("java.class.path"));
    }

    private static Program fromJar(File jar) throws CannotStart {
        if (!jar.isFile()) {
            throw new CannotStart("There is no jar " + jar + ".");
        }
        String name;
        try {
            // Signatures matter to those who load classes from it.
            JarFile file = new JarFile(jar, false);
            try {
                Manifest manifest = file.getManifest();
                name = manifest == null ? null : manifest.getMainAttributes().getValue(Attributes.Name.MAIN_CLASS);
            } finally {
                file.close();
            }
        } catch (IOException e) {
            throw new CannotStart("The jar " + jar + " cannot be read: " + e.getMessage());
        }
        if (name == null) {
            throw new CannotStart("The manifest of " + jar + " names no Main-Class.");
        }
        return fromClass(name.trim(), isOnClassPath(jar) ? ClassLoader.getSystemClassLoader() : loaderOf(jar),
                jar.getPath());
    }

    /** Follows the Class-Path of the manifest by itself. */
    private static ClassLoader loaderOf(File jar) throws CannotStart {
        try {
            return new URLClassLoader(new URL[] {jar.toURI().toURL()});
        } catch (IOException e) {
            throw new CannotStart("The jar " + jar + " has no address: " + e.getMessage());
        }
    }

    /** An entry may be spelled in another way, as with its short name. */
    private static boolean isOnClassPath(File jar) {
        String path = System.getProperty("java.class.path");
        File absolute = jar.getAbsoluteFile();
        for (int pass = 0; pass < 2; pass++) {
            int end;
            for (int start = 0; start <= path.length(); start = end + 1) {
                end = path.indexOf(File.pathSeparatorChar, start);
                if (end < 0) {
                    end = path.length();
                }
                File entry = new File(path.substring(start, end));
                if (end > start && (pass == 0 ? entry.getAbsoluteFile().equals(absolute) : isSame(entry, jar))) {
                    return true;
                }
            }
        }
        return false;
    }

    private static boolean isSame(File a, File b) {
        try {
            return a.getCanonicalFile().equals(b.getCanonicalFile());
        } catch (IOException e) {
            return false;
        }
    }

    private static Program fromClass(String name, ClassLoader loader, String where) throws CannotStart {
        // "app/Main" is good enough for java.exe, too.
        String className = name.replace('/', '.');
        Thread.currentThread().setContextClassLoader(loader);
        try {
            return ofClass(Class.forName(className, false, loader), where);
        } catch (ClassNotFoundException e) {
            throw new CannotStart("There is no class " + className + " in " + where + ".");
        } catch (LinkageError e) {
            throw unusable(className, loader, where, e);
        }
    }

    private static CannotStart unusable(String className, ClassLoader loader, String where, LinkageError error) {
        int needed = javaOf(loader.getResourceAsStream(className.replace('.', '/') + ".class"));
        if (error instanceof UnsupportedClassVersionError && needed > javaVersion()) {
            return new CannotStart("The class " + className + " in " + where + " was compiled for Java " + needed
                    + ", this is Java " + javaVersion() + ".");
        }
        return new CannotStart("The class " + className + " in " + where + " cannot be loaded: " + error);
    }

    /** The Java that a class file was compiled for, 0 when it cannot be read. */
    private static int javaOf(InputStream classFile) {
        if (classFile == null) {
            return 0;
        }
        try {
            DataInputStream in = new DataInputStream(classFile);
            try {
                in.readInt();
                in.readUnsignedShort();
                return in.readUnsignedShort() - CLASS_VERSION_BASE;
            } finally {
                in.close();
            }
        } catch (IOException e) {
            return 0;
        }
    }

    private static int javaVersion() {
        String version = System.getProperty("java.specification.version");
        return Integer.parseInt(version.startsWith("1.") ? version.substring(2) : version);
    }

    /**
     * "module" or "module/class". What begins with --module-path and --add-modules is there when the VM has started;
     * all of it by reflection, because Java 8 has no modules.
     */
    private static Program fromModule(String text) throws CannotStart {
        if (javaVersion() < 9) {
            throw new CannotStart("The module " + text + " needs Java 9, this is Java " + javaVersion() + ".");
        }
        int slash = text.indexOf('/');
        String moduleName = slash < 0 ? text : text.substring(0, slash);
        try {
            Class<?> layerType = Class.forName("java.lang.ModuleLayer");
            Object layer = layerType.getMethod("boot").invoke(null);
            Object module = orNull(layerType.getMethod("findModule", String.class).invoke(layer, moduleName));
            if (module == null) {
                throw new CannotStart("There is no module " + moduleName + " in the module path "
                        + System.getProperty("jdk.module.path") + "; the options of the VM need --module-path and"
                        + " --add-modules " + moduleName + ".");
            }
            Class<?> moduleType = Class.forName("java.lang.Module");
            Object descriptor = moduleType.getMethod("getDescriptor").invoke(module);
            Object declared = orNull(descriptor.getClass().getMethod("mainClass").invoke(descriptor));
            if (slash < 0 && declared == null) {
                throw new CannotStart("The module " + moduleName + " names no main class; " + MODULE_KEY
                        + " can do so behind a \"/\".");
            }
            String className = slash < 0 ? (String) declared : text.substring(slash + 1);
            String where = "the module " + moduleName;
            ClassLoader loader = (ClassLoader) moduleType.getMethod("getClassLoader").invoke(module);
            if (loader != null) {
                Thread.currentThread().setContextClassLoader(loader);
            }
            Class<?> type;
            try {
                type = (Class<?>) Class.class.getMethod("forName", moduleType, String.class)
                        .invoke(null, module, className);
            } catch (InvocationTargetException e) {
                throw new CannotStart("The class " + className + " in " + where + " cannot be loaded: " + e.getCause());
            }
            if (type == null) {
                throw new CannotStart("There is no class " + className + " in " + where + ".");
            }
            return ofClass(type, where);
        } catch (ReflectiveOperationException e) {
            throw new CannotStart("The module " + moduleName + " cannot be asked for its main class: " + e);
        } catch (LinkageError e) {
            throw new CannotStart("The main class of the module " + moduleName + " cannot be loaded: " + e);
        }
    }

    /** The content of a java.util.Optional. */
    private static Object orNull(Object optional) throws ReflectiveOperationException {
        return optional.getClass().getMethod("orElse", Object.class).invoke(optional, new Object[] {null});
    }

    private static Program ofClass(Class<?> type, String where) throws CannotStart {
        Method main = findMain(type);
        if (main == null) {
            throw new CannotStart("The class " + type.getName() + " in " + where
                    + " has no method \"public static void main(String[])\".");
        }
        try {
            // Neither the class nor, from Java 25 on, the method has to be public.
            main.setAccessible(true);
        } catch (RuntimeException e) {
            int dot = type.getName().lastIndexOf('.');
            throw new CannotStart("The main class of " + where + " is in a package that the module keeps to itself; the"
                    + " options of the VM need --add-opens " + where.substring(where.lastIndexOf(' ') + 1) + '/'
                    + type.getName().substring(0, Math.max(0, dot)) + "=ALL-UNNAMED.");
        }
        Constructor<?> constructor = null;
        if (!Modifier.isStatic(main.getModifiers())) {
            try {
                constructor = type.getDeclaredConstructor();
                constructor.setAccessible(true);
            } catch (NoSuchMethodException e) {
                throw new CannotStart("The class " + type.getName() + " in " + where + " has a main method of its"
                        + " instances and no constructor without parameters.");
            }
        }
        return new Program(main, constructor);
    }

    private static Method findMain(Class<?> type) {
        try {
            Method main = type.getMethod("main", String[].class);
            if (Modifier.isStatic(main.getModifiers()) && main.getReturnType() == void.class) {
                return main;
            }
        } catch (NoSuchMethodException e) {
            // Young Javas have more kinds.
        }
        if (javaVersion() < INSTANCE_MAIN) {
            return null;
        }
        Method withArguments = findYoungMain(type, String[].class);
        return withArguments != null ? withArguments : findYoungMain(type);
    }

    /** Any that is not private, of the class or one above it. */
    private static Method findYoungMain(Class<?> type, Class<?>... parameters) {
        for (Class<?> owner = type; owner != null; owner = owner.getSuperclass()) {
            try {
                Method main = owner.getDeclaredMethod("main", parameters);
                if (!Modifier.isPrivate(main.getModifiers()) && main.getReturnType() == void.class) {
                    return main;
                }
            } catch (NoSuchMethodException e) {
                continue;
            }
        }
        return null;
    }

    /** Runs it. What it throws comes out as it would without us, down to the last line of its trace. */
    void run(String[] arguments) throws Throwable {
        try {
            Object instance = constructor == null ? null : constructor.newInstance();
            if (main.getParameterTypes().length == 0) {
                main.invoke(instance);
            } else {
                main.invoke(instance, (Object) arguments);
            }
        } catch (InvocationTargetException e) {
            throw withoutUs(e.getCause());
        } catch (Error e) {
            // Initialising the class failed.
            throw withoutUs(e);
        }
    }

    private static Throwable withoutUs(Throwable thrown) {
        Set<Throwable> seen = Collections.newSetFromMap(new IdentityHashMap<Throwable, Boolean>());
        Throwable at = thrown;
        while (at != null && seen.add(at)) {
            StackTraceElement[] trace = at.getStackTrace();
            int end = trace.length;
            // Other threads have nothing of ours at their beginning.
            if (end > 0 && trace[end - 1].getClassName().equals("com.vantu.ryn.Start")) {
                while (end > 0 && isBelowMain(trace[end - 1].getClassName())) {
                    end--;
                }
                at.setStackTrace(Arrays.copyOf(trace, end));
            }
            at = at.getCause();
        }
        return thrown;
    }

    private static boolean isBelowMain(String className) {
        return className.startsWith("com.vantu.ryn.") || className.startsWith("java.lang.reflect.")
                || className.startsWith("jdk.internal.reflect.") || className.startsWith("sun.reflect.")
                || className.startsWith("java.lang.invoke.");
    }
}
