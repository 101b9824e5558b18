"""What the launcher survives, shown on the real program and written down: see tools/evidence."""
