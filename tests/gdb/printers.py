"""Shows what tests/gdb/Sample.cpp holds, and compares the order of each map with the program's own.

Everything is shown twice, in the process and in its core file, where no function can be called.
"""

import os
import sys

import gdb

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from session import at_stop, command, run, shown, source, write  # noqa: E402

SHOWN = (
    "Sample::text",
    "Sample::noText",
    "Sample::allIds[0]",
    "Sample::allIds[2]",
    "(Quill::IntfId&) Sample::allIds[2]",
    "Sample::noVlan",
    "Sample::someVlan",
    "Sample::portState",
    "Sample::noTopo",
    "Sample::topo",
    "Sample::port",
    "Sample::entity",
    "*Sample::topo",
    "*Sample::topo.get()",
    "Sample::topo->name_",
    "*Sample::entity",
    "*Sample::state",
    "*Sample::watch",
    "*Sample::topoVlan",
    "*Sample::config",
    "*Sample::bridging",
    "*Sample::interfaces",
    "Sample::noVlans.map",
    "Sample::fewVlans.map",
    "Sample::triples",
    "Sample::vlanSet.map",
    "Sample::noIntfs.map",
    "Sample::oneIntf.map",
    "Sample::triplesByText",
    "Sample::seededVlans.map",
)
LARGE = (
    "Sample::manyVlans.map",
    "Sample::manyNames.map",
    "Sample::largeVlanSet.map",
    "Sample::manyTriples",
    "Sample::manyIntfs.map",
    "Sample::byText.map",
    "Sample::intfSet.map",
    "Sample::textSet.map",
)
IN_ORDER = (
    "noVlans",
    "fewVlans",
    "manyVlans",
    "manyNames",
    "vlanSet",
    "largeVlanSet",
    "noIntfs",
    "oneIntf",
    "manyIntfs",
    "intfSet",
    "byText",
    "textSet",
    "seededVlans",
)


def plain(value):
    return value.format_string(pretty_structs=False).strip('"')


def keys(map_):
    """The keys that the printer shows, as the sample writes them."""
    printer = gdb.default_visualizer(map_)
    children = [child for _, child in printer.children()]
    return "".join(plain(key) + " " for key in (children if printer.display_hint() == "array" else children[::2]))


def differences():
    """Where a printer says other than the program, which tells the names of its ids and the order of its maps."""
    for i in range(int(gdb.parse_and_eval("Sample::idCount"))):
        name = gdb.parse_and_eval(f"Sample::allNames[{i}]").string()
        text = gdb.default_visualizer(gdb.parse_and_eval(f"Sample::allIds[{i}]")).to_string()
        if text != (name or "<empty>"):
            yield f"id {i} is {name}, and shown as {text}"
    for name in IN_ORDER:
        order = gdb.parse_and_eval(f"Sample::{name}.keys").string()
        text = keys(gdb.parse_and_eval(f"Sample::{name}.map"))
        if text != order:
            yield f"{name} has the keys {order}, and is shown with {text}"


def abridged(map_):
    """The size of a map, and the first and the last of what is shown of its members."""
    printer = gdb.default_visualizer(map_)
    children = [child for _, child in printer.children()]
    first, last = (", ".join(map(plain, some)) for some in (children[:4], children[-2:]))
    return f"{printer.to_string()}: {first} ... {last}"


def report():
    for expression in SHOWN:
        yield f"{expression}\n{shown(expression)}\n"
    for expression in LARGE:
        yield f"{expression}\n{abridged(gdb.parse_and_eval(expression))}\n"
    yield from differences()
    yield from in_c()


def in_c():
    """The same values shown where the program is inside of a C library."""
    values = [gdb.parse_and_eval(name) for name in ("Sample::oneIntf.map", "*Sample::topo")]
    before = [value.format_string() for value in values]
    command("set language c")
    after = [value.format_string() for value in values]
    command("set language auto")
    if after != before:
        yield f"shown differently in C: {after}"


run()
source()
lines = list(report())
command("generate-core-file sample.core")
command("kill")
command("core-file sample.core")
at_stop()
in_core = list(report())
os.remove("sample.core")
if in_core != lines:
    lines.extend(["shown differently in the core file", *in_core])
write("printers.actual", lines)
