"""GDB shows the values of TopoLib as what they mean: names, members and attributes.

    (gdb) source tools/gdb/topolib.py
    (gdb) print *topo
    $1 = Topology::Library::Topo = {name = "msti1", port = 1 member = {["Ethernet1"] = Topology::Library::Port = ...
    (gdb) print port->intf_
    $2 = "Ethernet1"

What is shown
  texts       Mox::String, Quill::IntfId (interned names as well), Bridging::VlanId and VlanIdOrNone
  maps        every collection and the maps beneath, with their size, in the order of a pass
  objects     whatever derives from Mox::PtrInterface, by attribute; Mox::Ptr as type, key, references, address
  <invalid>   memory that holds no such value, such as a variable that has no value yet

Mox::Ptr takes `*p`, `p->` and `p.get()`. Nothing is ever called in the program: all of this works on a core file too.

The program needs the debug information of its types. The preset `debug` has it. Elsewhere compile with -g, and with
-femit-class-debug-always (GCC) or -fstandalone-debug (Clang) where the libraries have less: compilers leave the members
of a class with virtual functions to the library that defines it. Interned names and objects need the symbols of the
libraries: not stripped.

`set print elements` bounds how many members are shown, `set print max-depth` how deep, `set print pretty on` puts each
on a line of its own, `print/r` shows the bare memory.
"""

import os
import sys


def _load():
    # Not __file__: where a script of somebody's sources this file, that is the script.
    folder = os.path.dirname(os.path.abspath(_load.__code__.co_filename))
    # To source this file again is to load it again.
    for name in [name for name in sys.modules if name.split(".")[0] == "topolib"]:
        del sys.modules[name]
    keeps_no_bytecode = sys.dont_write_bytecode
    sys.dont_write_bytecode = True
    sys.path.insert(0, folder)
    try:
        import topolib

        topolib.register()
    finally:
        sys.path.remove(folder)
        sys.dont_write_bytecode = keeps_no_bytecode


_load()
