"""Counted objects, by their attributes, and the pointers to them."""

import re

import gdb
import gdb.xmethod

from .memory import ERRORS, TextPrinter, object_at, require, words
from .texts import key_text

ROOT = "Mox::PtrInterface"

# What the framework keeps in every object, and is no attribute of it.
HIDDEN = {
    "Mox::PtrInterface::references_",
    "Mox::PtrInterface::hasNotificationActive_",
    "Mox::PtrInterface::NotifieeConst::position_",
    "Mox::Notifier::notifiees_",
    "Mox::Entity::parent_",
}


def class_name(type_):
    return type_.unqualified().strip_typedefs().name


def bases(type_):
    return [field for field in type_.fields() if field.is_base_class]


def is_object(type_):
    """Whether the type is PtrInterface or derives from it."""
    type_ = type_.strip_typedefs()
    if type_.code != gdb.TYPE_CODE_STRUCT:
        return False
    return type_.name == ROOT or any(is_object(base.type) for base in bases(type_))


def dynamic_class(address):
    """The class of the object there, which its first word names; so a variable without a value is found out."""
    table = gdb.Value(words(address, 1)[0]).cast(gdb.lookup_type("void").pointer())
    symbol = re.search(r"<vtable for (.*)\+16>$", table.format_string(symbols=True))
    require(symbol)
    return symbol[1]


def whole(value):
    """The name of the object's class, and the object as that class if its members are known."""
    name = dynamic_class(int(value.address))
    if name != class_name(value.type):
        try:
            gdb.lookup_type(name)
        except gdb.error:
            return name, value
        pointer = value.address.cast(value.address.dynamic_type)
        value = object_at(pointer, pointer.type.target())
    return name, value


def is_member(field):
    """Whether it is a data member of each object; those of the class have no place in one."""
    return hasattr(field, "bitpos") and not field.artificial and not field.name.startswith("_vptr")


def attributes(value):
    """The data members by name, those of the bases first."""
    for field in value.type.strip_typedefs().fields():
        if field.is_base_class:
            yield from attributes(value[field])
        elif is_member(field) and f"{class_name(value.type)}::{field.name}" not in HIDDEN:
            yield field.name.rstrip("_"), value[field]


def key_of(value):
    """The text of an object's name or key, which comes first among its attributes; None if it has none."""
    for _, first in attributes(value):
        return key_text(first)
    return None


def references_to(value):
    type_ = value.type.strip_typedefs()
    while type_.name != ROOT:
        base = next(base for base in bases(type_) if is_object(base.type))
        value, type_ = value[base], base.type.strip_typedefs()
    return int(value["references_"]["count_"])


class RecordPrinter:
    """Shows a value by its data members."""

    def __init__(self, value):
        self.value = value
        self.shown = None

    def to_string(self):
        return self.shown

    def children(self):
        if self.value is not None:
            yield from attributes(self.value)


class ObjectPrinter(RecordPrinter):
    """Shows an object as its class and its attributes."""

    def __init__(self, value):
        try:
            self.shown, self.value = whole(value)
        except ERRORS:
            self.shown, self.value = "<invalid>", None


class PtrPrinter(TextPrinter):
    def text(self, value):
        pointer = value["object_"]
        if int(pointer) == 0:
            return "null"
        if not is_object(pointer.type.target()):
            # Its type is declared only.
            return f"{dynamic_class(int(pointer))}, {int(pointer):#x}"
        name, pointee = whole(object_at(pointer, pointer.type.target()))
        key = key_of(pointee)
        count = references_to(pointee)
        label = name if key is None else f"{name}({key})"
        return f"{label}, {count} reference{'' if count == 1 else 's'}, {int(pointer):#x}"


class PtrMethod(gdb.xmethod.XMethodWorker):
    """What a Ptr answers without a call in the program."""

    def __init__(self, pointee, result):
        self.pointee, self.result = pointee, result

    def get_arg_types(self):
        return None

    def get_result_type(self, _):
        return self.pointee if self.result == "object" else self.pointee.pointer()

    def __call__(self, ptr):
        pointer = ptr["object_"]
        return object_at(pointer, self.pointee) if self.result == "object" else pointer


class PtrMethods(gdb.xmethod.XMethodMatcher):
    RESULTS = {"operator*": "object", "operator->": "pointer", "get": "pointer"}

    def __init__(self):
        super().__init__("Mox::Ptr")
        self.methods = [gdb.xmethod.XMethod(name) for name in self.RESULTS]

    def match(self, class_type, method_name):
        name = class_type.unqualified().strip_typedefs().name or ""
        if name.split("<")[0] != "Mox::Ptr":
            return None
        if not any(method.name == method_name and method.enabled for method in self.methods):
            return None
        return PtrMethod(class_type.template_argument(0), self.RESULTS[method_name])
