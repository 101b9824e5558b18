"""What the parts of the evidence share: a bench to work on, and rows that say what came of it."""
import contextlib
import dataclasses
import itertools
import pathlib
import shutil

import harness


@dataclasses.dataclass
class Row:
    """One line of the table."""
    subject: str  # what was done to the program
    done: str  # how much of it
    outcome: str  # what came of it, in figures
    unseen: str = ""  # what Wine cannot show of it
    broken: list = dataclasses.field(default_factory=list)  # promises that did not hold, a sentence each

    def expect(self, holds, sentence):
        if not holds:
            self.broken.append(sentence)
        return holds


class Bench:
    """A Wine prefix, and an empty folder for one part of the evidence."""

    def __init__(self, host, folder, progress):
        self.host = host
        self.folder = pathlib.Path(folder)
        # progress(text): says on the terminal how far a part has come.
        self.progress = progress
        self._numbers = itertools.count(1)

    @contextlib.contextmanager
    def app(self, **options):
        """An application folder that takes every VM (`options` as for harness.App), gone afterwards."""
        folder = self.folder / str(next(self._numbers))
        app = harness.App(self.host, folder / "app", **options)
        app.configure()
        try:
            yield app
        finally:
            app.end()
            shutil.rmtree(folder, ignore_errors=True)
