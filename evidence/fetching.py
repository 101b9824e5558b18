"""What the parts about fetched VMs share."""
import contextlib
import ctypes
import os
import pathlib
import subprocess

import pefile

import harness

ENGLISH, GERMAN, JAPANESE, ARABIC = 1033, 1031, 1041, 1025
LOCALES = {ENGLISH: "en_US", GERMAN: "de_DE", JAPANESE: "ja_JP", ARABIC: "ar_SA"}
# Numbers of texts in resources/resource.h.
NO_VM, NO_CONNECTION, DOWNLOAD_ERROR_TITLE = 101, 105, 106
NO_DOWNLOAD, ERROR_TITLE, NO_CONNECTION_TITLE, EXTRACTION_ERROR_TITLE, NO_EXTRACTION = 109, 110, 111, 112, 113
DOWNLOADING_TITLE, DOWNLOADING = 114, 115
RT_STRING = 6
SET_CHILD_SUBREAPER = 36


def texts():
    """Language to number to text, as the launcher carries them."""
    found = {}
    image = pefile.PE(harness.LAUNCHER)
    (strings,) = (kind for kind in image.DIRECTORY_ENTRY_RESOURCE.entries if kind.id == RT_STRING)
    for block in strings.directory.entries:
        for language in block.directory.entries:
            data = image.get_data(language.data.struct.OffsetToData, language.data.struct.Size)
            # Sixteen texts share a resource; each is preceded by its length.
            for number in range(16 * block.id - 16, 16 * block.id):
                end = 2 + 2 * int.from_bytes(data[:2], "little")
                found.setdefault(language.id, {})[number] = data[2:end].decode("utf-16-le")
                data = data[end:]
    return found


def tree(folder):
    """All that is below `folder`: path to size, -1 for a folder."""
    found = {}
    waiting = [(pathlib.Path(folder), "")]
    while waiting:
        path, prefix = waiting.pop()
        with contextlib.suppress(FileNotFoundError), os.scandir(path) as entries:
            for entry in entries:
                is_folder = entry.is_dir(follow_symlinks=False)
                found[prefix + entry.name] = -1 if is_folder else entry.stat(follow_symlinks=False).st_size
                if is_folder:
                    waiting.append((path / entry.name, f"{prefix}{entry.name}/"))
    return found


@contextlib.contextmanager
def volume(folder, size_bytes):
    """A small disk of its own at `folder`; yields change(options), which mounts it again with others."""
    if os.geteuid() != 0:
        raise RuntimeError("a small volume needs mount, and mount needs root: run this part as root")
    folder.mkdir(parents=True)
    subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={size_bytes}", "ryn-evidence", folder], check=True)
    try:
        yield lambda options: subprocess.run(["mount", "-o", f"remount,{options}", folder], check=True)
    finally:
        # Also when something still has a file open there.
        subprocess.run(["umount", "--lazy", folder], check=True)


class Orphans:
    """Wine lets go of every program that it starts. Here they become this process's own children, whose unix processes
    can be found, and of which the kernel tells what each took when it has ended."""

    def __enter__(self):
        self._adopt(1)
        return self

    def __exit__(self, *error):
        self._adopt(0)
        for process, (name, state) in self._children().items():
            if state == "Z" and name.endswith(".exe") and name != "runner.exe":
                os.waitpid(process, os.WNOHANG)

    @staticmethod
    def _adopt(yes):
        if ctypes.CDLL(None, use_errno=True).prctl(SET_CHILD_SUBREAPER, yes, 0, 0, 0) != 0:
            raise OSError(ctypes.get_errno(), "prctl")

    @staticmethod
    def _children():
        """Process to name and state of all children."""
        found = {}
        for task in pathlib.Path("/proc/self/task").iterdir():
            with contextlib.suppress(OSError):
                for process in (task / "children").read_text().split():
                    with contextlib.suppress(OSError):
                        stat = pathlib.Path(f"/proc/{process}/stat").read_text()
                        name, state = stat[stat.index("(") + 1:].rsplit(")", 1)
                        found[int(process)] = name, state.split()[0]
        return found

    def find(self, name):
        """Processes of the program of this name, running or ended, the oldest first."""
        return sorted(process for process, (known, _) in self._children().items() if known == name[:15])

    def running(self, name):
        return sorted(process for process, known in self._children().items() if known[0] == name[:15] and known[1] != "Z")

    def usage(self, name):
        """The most memory that a process of this name has taken, in bytes, and the signal that ended one, or 0. All have
        ended or are about to; they are forgotten. There can be several: what was forked to start a program and could not."""
        harness.wait_until(lambda: self.find(name), f"process {name}")
        memory, ending = 0, 0
        for process in self.find(name):
            status, usage = harness.wait_until(lambda: self._reap(process), f"end of {name}")
            memory = max(memory, usage.ru_maxrss << 10)
            ending = os.WTERMSIG(status) if os.WIFSIGNALED(status) else ending
        return memory, ending

    @staticmethod
    def _reap(process):
        ended, status, usage = os.wait4(process, os.WNOHANG)
        return (status, usage) if ended else None
