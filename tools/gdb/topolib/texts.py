"""Values that are short texts: strings, interface ids, VLAN ids."""

import gdb

from .memory import ERRORS, TextPrinter, object_at, read, require, symbol_address, words

# The place of each of its numbers in an interface id, by how many there are, and the forms as prefix, count of numbers
# and separator: as quill/detail/IntfName.cpp has them. Form 0 is an interned name.
WIDTHS = ((), (32,), (16, 16), (12, 10, 10))
FORMS = (
    None,
    ("Ethernet", 1, ""),
    ("Ethernet", 2, "/"),
    ("Ethernet", 3, "/"),
    ("eth", 1, ""),
    ("swp", 1, ""),
    ("swp", 2, "s"),
    ("PortChannel", 1, ""),
    ("bond", 1, ""),
    ("team", 1, ""),
    ("Cpu", 0, ""),
    ("VxlanTunnel", 1, ""),
    ("vxlan", 1, ""),
    ("MplsTrunk", 1, ""),
    ("mpls", 1, ""),
    ("Vlan", 1, ""),
    ("Loopback", 1, ""),
)
FORM_SHIFT = 23
KINDS = 8

# The table of interned names begins with their vector; a reference to it is what the function keeps.
INTERNED = "_ZZN5Quill12_GLOBAL__N_18internedEvE8instance"


def characters_of(string):
    """The address and the number of the characters of a Mox::String. They follow its header and end with a zero."""
    text = string["text_"]
    if int(text) == 0:
        return 0, 0
    size = int(text["size"])
    begin = int(text) + text.type.target().sizeof
    require(int(text["references"]["count_"]) != 0 and read(begin + size, 1) == b"\0")
    return begin, size


def text_of(string):
    begin, size = characters_of(string)
    return read(begin, size).decode("utf-8", "backslashreplace") if size else ""


def interned_name(place):
    try:
        address = symbol_address(INTERNED)
    except gdb.error:
        # The library is stripped, or not loaded yet.
        return f"<interned {place}>"
    (table,) = words(address, 1)
    begin, end = words(table, 2)
    string = gdb.lookup_type("Mox::String")
    require(begin + (place + 1) * string.sizeof <= end)
    return text_of(object_at(begin + place * string.sizeof, string))


def interface_name(intf):
    word0, word1 = int(intf["word0_"]), int(intf["word1_"])
    require(word0 >> 28 < KINDS)
    form, sub = word0 >> FORM_SHIFT & 0x1F, word0 & (1 << FORM_SHIFT) - 1
    if form == 0:
        require(word0 >> 28 != 0 and sub == 0)
        return interned_name(word1)
    require(form < len(FORMS))
    prefix, count, separator = FORMS[form]
    numbers = []
    for width in reversed(WIDTHS[count]):
        numbers.insert(0, str(word1 & (1 << width) - 1))
        word1 >>= width
    suffix = f".{sub - 1}" if sub else ""
    return prefix + separator.join(numbers) + suffix


class StringPrinter(TextPrinter):
    def text(self, value):
        begin, size = characters_of(value)
        self.hint = "string"
        if size == 0:
            return ""
        # GDB reads and escapes the characters as it does with those of the program's own arrays.
        return gdb.Value(begin).cast(gdb.lookup_type("char").pointer()).lazy_string(length=size)


class IntfIdPrinter(TextPrinter):
    def text(self, value):
        if int(value["word0_"]) == 0 and int(value["word1_"]) == 0:
            return "<empty>"
        name = interface_name(value)
        self.hint = "string"
        return name


class VlanIdPrinter(TextPrinter):
    def text(self, value):
        require(1 <= int(value["value_"]) <= 4094)
        return str(value["value_"])


class VlanIdOrNonePrinter(TextPrinter):
    def text(self, value):
        require(int(value["value_"]) <= 4094)
        return str(value["value_"]) if value["value_"] else "none"


KEY_TEXTS = {
    "Mox::String": text_of,
    "Quill::IntfId": interface_name,
    "Bridging::VlanId": lambda vid: str(int(vid["value_"])),
}


def key_text(value):
    """What names an object, as plain text; None for a value that is no key, or an invalid one."""
    read_text = KEY_TEXTS.get(value.type.unqualified().strip_typedefs().name)
    try:
        return read_text and read_text(value)
    except ERRORS:
        return None
