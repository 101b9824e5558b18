"""Runs the parts of the evidence, prints their tables and writes docs/evidence.md. A part is a module of this folder
with TITLE, ABOUT (a sentence or two for the document) and rows(bench), which yields Row after Row."""
import argparse
import dataclasses
import datetime
import hashlib
import importlib
import json
import platform
import subprocess
import sys
import tempfile
import time

import harness

from .core import Bench

PARTS = ["planted", "packs", "faults", "soak", "input"]
KEPT = harness.REPOSITORY / "build" / "evidence"
DOCUMENT = harness.REPOSITORY / "docs" / "evidence.md"


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout.strip()


def versions():
    launcher = harness.LAUNCHER.read_bytes()
    return {
        "launcher": f"launcher.exe of {len(launcher):,} bytes, SHA-256 {hashlib.sha256(launcher).hexdigest()}",
        "system": f"{platform.freedesktop_os_release()['PRETTY_NAME']}, {output('wine', '--version')}",
        "compiler": output("x86_64-w64-mingw32-g++-posix", "--version").splitlines()[0],
    }


def run(host, name):
    part = importlib.import_module(f"evidence.{name}")
    terminal = sys.stderr.isatty()

    def progress(text):
        if terminal:
            print(f"\r\033[K{name}: {text}", end="", file=sys.stderr, flush=True)

    start, rows = time.monotonic(), []
    with tempfile.TemporaryDirectory(prefix=f"ryn-evidence-{name}-") as folder:
        print(f"\n{part.TITLE}", flush=True)
        for row in part.rows(Bench(host, folder, progress)):
            progress("")
            print(f"  {row.subject}: {row.done}: {row.outcome}", flush=True)
            for sentence in row.broken:
                print(f"    BROKEN: {sentence}", flush=True)
            rows.append(dataclasses.asdict(row))
    return {"title": part.TITLE, "about": part.ABOUT, "date": datetime.date.today().isoformat(),
            "seconds": round(time.monotonic() - start), "versions": versions(), "rows": rows}


def document(parts, missing):
    def cell(text):
        return text.replace("|", "\\|").replace("\n", " ")

    lines = ["# What the launcher survives", "",
             "Made by `tools/evidence`, which ends with an error when a promise does not hold. Each part says when and with",
             "what it was run. Nothing here is a limit of time: figures of time are what was seen on one machine.", ""]
    if missing:
        lines += [f"Not run for this document: {', '.join(missing)}.", ""]
    for part in parts:
        rows = part["rows"]
        lines += [f"## {part['title']}", "", part["about"], "",
                  f"{part['date']}, {part['seconds']} s. {part['versions']['launcher']}; {part['versions']['compiler']};"
                  f" {part['versions']['system']}.", "",
                  "| What | How much | What came of it | What Wine cannot show |", "| --- | --- | --- | --- |"]
        lines += ["| " + " | ".join(cell(row[name]) for name in ("subject", "done", "outcome", "unseen")) + " |" for row in rows]
        broken = [sentence for row in rows for sentence in row["broken"]]
        lines += ["", *(f"- **Did not hold:** {sentence}" for sentence in broken), *([""] if broken else [])]
    return "\n".join(lines)


def main():
    parser = argparse.ArgumentParser(prog="tools/evidence", description=__doc__.splitlines()[0])
    parser.add_argument("parts", nargs="*", metavar="part", help=f"all, unless some of {', '.join(PARTS)} are named")
    arguments = parser.parse_args()
    if unknown := set(arguments.parts) - set(PARTS):
        parser.error(f"no such part: {', '.join(sorted(unknown))}")
    KEPT.mkdir(parents=True, exist_ok=True)
    with harness.Host() as host:
        for name in arguments.parts or PARTS:
            kept = KEPT / f"{name}.json"
            kept.unlink(missing_ok=True)
            kept.write_text(json.dumps(run(host, name), indent=1))
    # Parts that were run another day stay in the document.
    parts = [json.loads(kept.read_text()) for name in PARTS if (kept := KEPT / f"{name}.json").exists()]
    missing = [name for name in PARTS if not (KEPT / f"{name}.json").exists()]
    DOCUMENT.write_text(document(parts, missing), "utf-8")
    broken = sum(len(row["broken"]) for part in parts for row in part["rows"])
    print(f"\n{len(parts)} of {len(PARTS)} parts, {broken} promises broken; written to {DOCUMENT.relative_to(harness.REPOSITORY)}")
    return 1 if broken else 0


if __name__ == "__main__":
    sys.exit(main())
