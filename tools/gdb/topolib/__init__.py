"""Registers the printers with GDB."""

import gdb
import gdb.printing
import gdb.xmethod

from . import maps, objects, texts

PRINTERS = {
    "Mox::String": texts.StringPrinter,
    "Quill::IntfId": texts.IntfIdPrinter,
    "Bridging::VlanId": texts.VlanIdPrinter,
    "Bridging::VlanIdOrNone": texts.VlanIdOrNonePrinter,
    "Bridging::VlanPortConfig": objects.RecordPrinter,
    "Mox::Ptr": objects.PtrPrinter,
    "Mox::HashMap": maps.HashMapPrinter,
    "Mox::IdMap": maps.IdMapPrinter,
    "Mox::ValueCollection": maps.ValueCollectionPrinter,
    "Mox::EntityCollection": maps.EntityCollectionPrinter,
    "Topology::Library::Vlan::detail::FewMap": maps.FewMapPrinter,
}


class Lookup(gdb.printing.PrettyPrinter):
    """Chooses the printer of a value by its type."""

    def __init__(self):
        names = [*PRINTERS, objects.ROOT]
        super().__init__("TopoLib", [gdb.printing.SubPrettyPrinter(name) for name in names])

    def __call__(self, value):
        if value.type.code in (gdb.TYPE_CODE_REF, gdb.TYPE_CODE_RVALUE_REF):
            value = value.referenced_value()
        type_ = value.type.unqualified().strip_typedefs()
        if type_.code != gdb.TYPE_CODE_STRUCT or type_.name is None:
            return None
        name = type_.name.split("<")[0]
        printer = PRINTERS.get(name)
        if printer is None and objects.is_object(type_):
            name, printer = objects.ROOT, objects.ObjectPrinter
        if printer is None or not self.is_enabled(name):
            return None
        return printer(value.cast(type_))

    def is_enabled(self, name):
        return any(sub.name == name and sub.enabled for sub in self.subprinters)


def register():
    gdb.printing.register_pretty_printer(None, Lookup(), replace=True)
    gdb.xmethod.register_xmethod_matcher(None, objects.PtrMethods(), replace=True)
