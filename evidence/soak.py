"""Thousands of launches in one prefix: what grows?"""
import concurrent.futures
import os
import pathlib
import shutil
import subprocess

from harness import BUILD, FIXTURES, install_vm, windows_path

from .core import Row

TITLE = "Soak"
ABOUT = ("Launches one after the other and side by side, and rounds of a service (started, stopped), all in one prefix whose "
         "Windows is never started anew. Between batches is counted what a start can leave behind: processes, what Wine's "
         "server keeps (memory, and files it has open: every handle, event, process and key lives in it), temporary files, "
         "files of the prefix. The first batch does not count, it warms up.")
LAUNCHES, BATCH = 10_000, 500
SIDE_BY_SIDE, STREAMS = 1_000, 10
ROUNDS, ROUND_BATCH = 1_000, 100
BENCH = BUILD / "tools" / "benchmarks"
VM_EXIT_CODE = 42  # of bench_noop.exe
WINE_LEAKS = "what Windows itself keeps of a process; handles of Wine are those of its server"


def status(pid, name):
    lines = (pathlib.Path("/proc") / str(pid) / "status").read_text().splitlines()
    return int(next(line for line in lines if line.startswith(name + ":")).split()[1])


class Machine:
    """What a start could leave behind, counted from outside of Windows."""

    def __init__(self, host):
        self._host = host
        self._server = next(pid for pid in self._pids() if self._name(pid).startswith("wineserver"))

    @staticmethod
    def _name(pid):
        return (pathlib.Path("/proc") / pid / "comm").read_text().strip()

    def _pids(self):
        own = b"WINEPREFIX=" + os.fsencode(self._host.prefix)
        for folder in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                if own in (folder / "environ").read_bytes().split(b"\0"):
                    yield folder.name
            except OSError:
                pass  # ended meanwhile

    def count(self):
        files = sum(1 for path in self._host.prefix.rglob("*") if path.is_file())
        # The runner of this very program's shell is none of them: it has no prefix in its environment.
        return {"processes": sum(1 for _ in self._pids()), "server KiB": status(self._server, "VmRSS"),
                "server's files": len(os.listdir(f"/proc/{self._server}/fd")), "files of the prefix": files}


# How much more than after the warm-up is no growth: memory that the server's allocator has not given back.
TOLERANCE = {"processes": 0, "server KiB": 2048, "server's files": 4, "files of the prefix": 0}


def compared(row, first, last):
    """Says in the row what has grown."""
    row.outcome += "; " + ", ".join(f"{name} {first[name]:,} -> {last[name]:,}" for name in first)
    for name, more in TOLERANCE.items():
        row.expect(last[name] <= first[name] + more, f"{row.subject}: {name} grew from {first[name]} to {last[name]}")
    return row


def launches(host, app, count):
    """Starts the application so many times, one after the other; an error unless each ended with the VM's code."""
    command = host.command(BENCH / "bench_launch.exe", count, VM_EXIT_CODE, f'"{windows_path(app.program)}"')
    done = subprocess.run(command, env=host.environment, capture_output=True, text=True, timeout=60 + count * 5)
    if done.returncode != 0 or len(done.stdout.splitlines()) != count:
        raise RuntimeError(f"{len(done.stdout.splitlines())} of {count} launches: {done.stderr[-500:]}")


def designed_files(row, temp, count):
    """Each launch leaves its properties file for the VM, which takes it away; this VM does not. Returns how many more
    there were."""
    files = list(temp.iterdir())
    designed = [path for path in files if path.name.lower().startswith("ryn") and path.suffix.lower() == ".tmp"]
    row.expect(len(designed) == count, f"{row.subject}: {count} launches left {len(designed)} properties files")
    for path in files:
        path.unlink()
    return len(files) - len(designed)


def in_sequence(bench, app, temp):
    row, machine, more, first = Row("launches, one after the other", f"{LAUNCHES:,}", "", WINE_LEAKS), Machine(bench.host), 0, None
    for done in range(0, LAUNCHES, BATCH):
        bench.progress(f"{done:,} of {LAUNCHES:,} launches")
        launches(bench.host, app, BATCH)
        more += designed_files(row, temp, BATCH)
        first = first or machine.count()
    row.outcome = f"each ended with the VM's exit code; temporary files beyond the designed one: {more}"
    row.expect(more == 0, f"{more} temporary files stayed")
    return compared(row, first, machine.count())


def side_by_side(bench, app, temp):
    row = Row(f"launches, {STREAMS} at a time", f"{SIDE_BY_SIDE:,}", "", WINE_LEAKS)
    machine = Machine(bench.host)
    first = machine.count()
    with concurrent.futures.ThreadPoolExecutor(STREAMS) as pool:
        list(pool.map(lambda _: launches(bench.host, app, SIDE_BY_SIDE // STREAMS), range(STREAMS)))
    more = designed_files(row, temp, SIDE_BY_SIDE)
    row.outcome = f"each ended with the VM's exit code; temporary files beyond the designed one: {more}"
    row.expect(more == 0, f"{more} temporary files stayed")
    return compared(row, first, machine.count())


def services(bench, app, temp):
    row = Row("rounds of a service: started, running, stopped, ended", f"{ROUNDS:,}", "", WINE_LEAKS)
    machine, more, first = Machine(bench.host), 0, None
    home = app.folder / "service"
    install_vm(home, "sun_11", wait="ryn-soak-never")
    app.configure(ryn__nl__current__vm=r"service\bin\javaw.exe")
    command = f'"{windows_path(app.program)}" -tqrynservice ryn-soak'
    for done in range(0, ROUNDS, ROUND_BATCH):
        bench.progress(f"{done:,} of {ROUNDS:,} rounds")
        ended = subprocess.run(bench.host.command(FIXTURES / "service_driver.exe", "ryn-soak", command, f"rounds={ROUND_BATCH}"),
                               env=bench.host.environment, capture_output=True, text=True, timeout=60 + ROUND_BATCH * 10)
        # Any start or end that went wrong has a line of its own.
        if ended.returncode != 0 or [line.split()[0] for line in ended.stdout.splitlines()] != ["rounds"]:
            raise RuntimeError(f"a round went wrong: {ended.stdout}{ended.stderr}")
        more += designed_files(row, temp, ROUND_BATCH)
        first = first or machine.count()
    alive = bench.host.signal("ryn-soak-never", check=False)
    row.outcome = (f"each stopped with exit code 0; VMs that live on: {int(alive)};"
                   f" temporary files beyond the designed one: {more}")
    row.expect(more == 0, f"{more} temporary files stayed")
    row.expect(not alive, "a VM outlived its service")
    return compared(row, first, machine.count())


def rows(bench):
    # Wine takes the variables for it from its registry.
    name = subprocess.run(bench.host.command("cmd", "/c", "echo", "%TEMP%"), env=bench.host.environment, capture_output=True,
                          text=True, timeout=60, check=True).stdout.strip()
    temp = bench.host.prefix / "drive_c" / name.removeprefix("C:\\").replace("\\", "/")
    for path in temp.iterdir():
        shutil.rmtree(path) if path.is_dir() else path.unlink()
    with bench.app(name="soak") as app:
        programs = app.folder / "vm" / "bin"
        programs.mkdir(parents=True)
        for name in ("java.exe", "javaw.exe"):
            shutil.copy(BENCH / "bench_noop.exe", programs / name)
        app.configure(ryn__nl__current__vm=r"vm\bin\javaw.exe")
        yield in_sequence(bench, app, temp)
        yield side_by_side(bench, app, temp)
        yield services(bench, app, temp)
