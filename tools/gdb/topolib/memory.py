"""The memory of the program, which may be a core file."""

import struct

import gdb


class Invalid(Exception):
    """The memory holds no value of the type."""


# What reading a value that is none may raise; TypeError where the value lies nowhere in memory.
ERRORS = (Invalid, gdb.error, OverflowError, TypeError, ValueError)


def require(condition):
    if not condition:
        raise Invalid


def read(address, size):
    return bytes(gdb.selected_inferior().read_memory(address, size))


def words(address, count):
    """So many 64-bit words."""
    return struct.unpack(f"<{count}Q", read(address, 8 * count))


def symbol_address(linkage_name):
    """Where a variable lies that may have no debug information. The linkage name is understood in every language."""
    return int(gdb.parse_and_eval(f"&{linkage_name}"))


def objects_of(type_):
    """A function from an address to the object of this type there."""
    # As the element of an array: where GDB follows a pointer to a class, it trusts the object and warns of its faults.
    pointer = type_.array(0).pointer()
    return lambda address: gdb.Value(int(address)).cast(pointer).dereference()[0]


def object_at(address, type_):
    return objects_of(type_)(address)


def readable(value):
    """The value, or what to show in its place where no memory is behind it."""
    try:
        value.fetch_lazy()
        return value
    except gdb.MemoryError:
        return "<invalid>"


def object_of(number, type_):
    """The object whose bytes are this number."""
    return gdb.Value(number.to_bytes(8, "little")[: type_.sizeof], type_)


def constant(type_, name):
    """A static constant of a class."""
    return gdb.Value(0).cast(type_.pointer()).dereference()[name]


def aligned(offset, *types):
    """The first offset, from this one on, at which an object with members of these types may lie."""
    alignment = max(1, *(type_.alignof for type_ in types))
    return (offset + alignment - 1) // alignment * alignment


def bits_of(word):
    """The places of the bits that are set, in ascending order."""
    while word:
        yield (word & -word).bit_length() - 1
        word &= word - 1


class TextPrinter:
    """Shows a value as what `text` says."""

    def __init__(self, value):
        self.hint = None
        try:
            self.shown = self.text(value)
        except ERRORS:
            self.hint = None
            self.shown = "<invalid>"

    def to_string(self):
        return self.shown

    def display_hint(self):
        return self.hint
