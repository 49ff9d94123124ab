"""Shows memory that holds no values: each printer must say so, or show what is there, and never fail."""

import os
import struct
import sys

import gdb

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from session import command, run, shown, write  # noqa: E402

TYPES = (
    "Mox::String",
    "Quill::IntfId",
    "Bridging::VlanId",
    "Bridging::VlanIdOrNone",
    "Mox::Ptr<Topology::Library::Topo>",
    "Topology::Library::Topo",
    "Topology::Library::LibState",
    "Bridging::VlanConfig",
    "Sample::Watch",
    "Mox::HashMap<Mox::String, Sample::Triple, Mox::ProcessSeed>",
    "Mox::IdMap<Bridging::VlanId, Sample::Triple>",
    "Mox::ValueCollection<Bridging::VlanId, bool, Mox::ProcessSeed>",
    "Mox::ValueCollection<Quill::IntfId, unsigned int, Mox::ProcessSeed>",
    "Mox::EntityCollection<Quill::IntfId, Topology::Library::Port, Mox::ProcessSeed>",
)
# Objects to spoil word by word: by where they lie and their type.
OBJECTS = (
    ("&Sample::text", "Mox::String"),
    ("&Sample::topo", "Mox::Ptr<Topology::Library::Topo>"),
    ("Sample::topo.object_", "Topology::Library::Topo"),
    ("Sample::port.object_", "Topology::Library::Port"),
    ("Sample::watch.object_", "Sample::Watch"),
    ("Sample::config.object_", "Bridging::Topology::Config"),
    ("Sample::topoVlan.object_", "Topology::Library::Vlan::TopoVlan"),
    ("&Sample::triplesByText", "Mox::HashMap<Mox::String, Sample::Triple, Mox::ProcessSeed>"),
    ("&Sample::triples", "Mox::IdMap<Bridging::VlanId, Sample::Triple>"),
    ("&Sample::manyTriples", "Mox::IdMap<Bridging::VlanId, Sample::Triple>"),
)


def spoiled(address, size):
    """The bytes of an object with a word replaced, in all ways that matter."""
    memory = gdb.selected_inferior()
    good = bytes(memory.read_memory(address, size))
    code = int(gdb.parse_and_eval("(long) &Sample::stop"))
    for place in range(0, size - 7, 8):
        (word,) = struct.unpack_from("<Q", good, place)
        for other in (0, 1, 2**64 - 1, 0xA5A5A5A5A5A5A5A5, word + 8, word ^ 1 << 32, word ^ 1 << 33, GARBAGE, code):
            yield good[:place] + struct.pack("<Q", other % 2**64) + good[place + 8 :]


def in_garbage(type_):
    """The memory as a value of the type. Where GDB follows a pointer to a class, it looks for the object around it."""
    return f"{{{type_}}} {GARBAGE}"


def check(expression):
    """What is shown; a failure of a printer ends the test."""
    try:
        text = shown(expression)
    except gdb.error as error:
        text = f"raises {error}, for {gdb.selected_inferior().read_memory(GARBAGE, 64).tobytes().hex(' ', 8)}"
    if "raises" in text or "Exception" in text or "warning" in text:
        failures.append(f"{expression}: {text}")
    return text


lines, failures = [], []

lines.append("before the program runs")
for name in ("text", "topo", "oneIntf.map", "fewVlans.map", "triples"):
    lines.append(f"  {name}: {check('Sample::' + name)}")
# An interned name that nobody can tell yet.
interned = gdb.Value(struct.pack("<II", 3, 1 << 28), gdb.lookup_type("Quill::IntfId"))
lines.append(f"  Quill::IntfId: {interned.format_string()}")

run()
GARBAGE = int(gdb.parse_and_eval("(long) &Sample::garbage"))
SIZE = int(gdb.parse_and_eval("sizeof(Sample::garbage)"))
for name, bytes_ in (("zeros", b"\0"), ("ones", b"\xff"), ("nowhere", b"\xa5")):
    gdb.selected_inferior().write_memory(GARBAGE, bytes_ * SIZE)
    lines.append(name)
    lines.extend(f"  {type_}: {check(in_garbage(type_))}" for type_ in TYPES)

count = 0
for where, type_ in OBJECTS:
    address = int(gdb.parse_and_eval(f"(long) {where}"))
    for memory in spoiled(address, gdb.lookup_type(type_).sizeof):
        gdb.selected_inferior().write_memory(GARBAGE, memory)
        check(in_garbage(type_))
        count += 1
lines.append(f"{count} spoiled objects")

lines.append("maps with another number of members than they say")
PAGES = "(*(Mox::detail::IdPages<Sample::Triple>**) &Sample::manyTriples.pages_)"
for map_, size in (("triplesByText", "Sample::triplesByText.size_"), ("manyTriples", f"{PAGES}->size_")):
    gdb.selected_inferior().write_memory(int(gdb.parse_and_eval(size).address), b"\2")
    lines.append(check(f"Sample::{map_}"))

lines.append("a collection with a member that lies nowhere")
collection = gdb.parse_and_eval("Sample::bridging.object_->vlanConfig_")
members = gdb.default_visualizer(collection["map_"]).children()
pointer = [value for name, value in members if name == "value"][0]
gdb.selected_inferior().write_memory(int(pointer.address), b"\xff" * 8)
lines.append(check("Sample::bridging.object_->vlanConfig_"))
write("garbage.actual", lines + failures)
