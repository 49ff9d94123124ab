"""What the tests of the printers share: a GDB session over the sample, and what it shows."""

import os
import re

import gdb

FOLDER = os.path.dirname(os.path.abspath(__file__))
PRINTERS = os.path.join(FOLDER, "..", "..", "tools", "gdb", "topolib.py")


def command(line):
    return gdb.execute(line, to_string=True)


def source():
    command(f"source {PRINTERS}")


def at_stop():
    """Chooses the frame of the sample's main."""
    command("frame function main")


def run():
    """Starts the sample and stops where it has everything."""
    command("break Sample::stop")
    try:
        command("run")
    except gdb.error:
        pass
    if gdb.selected_thread() is None:
        print("GDB cannot start programs here")
        command("quit 1")
    at_stop()


def shown(expression):
    """What `print` shows, without what differs from run to run."""
    text = command(f"print {expression}")
    return re.sub(r"0x[0-9a-f]+", "0x...", re.sub(r"^\$\d+ = ", "", text)).rstrip("\n")


def write(name, lines):
    """Leaves in the working directory what is compared with what is expected."""
    with open(name, "w", encoding="utf-8") as out:
        out.write("".join(f"{line}\n" for line in lines))


for setting in ("pretty on", "address on", "object off"):
    command(f"set print {setting}")
for setting in ("confirm off", "width 0", "height 0", "startup-with-shell off", "disable-randomization off"):
    command(f"set {setting}")
source()
