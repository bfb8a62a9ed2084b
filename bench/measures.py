"""What a script of several measures does with its arguments."""

import signal
import sys


def run(usage, *functions):
    """Runs those that the command line names, all by default."""
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))
    measures = {function.__name__: function for function in functions}
    chosen = sys.argv[1:] or list(measures)
    if not set(chosen) <= set(measures):
        sys.exit(usage.strip())
    for name in chosen:
        measures[name]()
