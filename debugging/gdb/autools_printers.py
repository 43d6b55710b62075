"""gdb pretty-printers for the library's String, RT_List, release and component classes.

    (gdb) source .../autools_printers.py

The classes are recognised by name in whatever module uses them. Nothing of the process is called or changed.
"""

import gdb
import gdb.printing

ACTIONS = {0: "INSTALL", 1: "REMOVE", 2: "FORCEREINSTALL", 3: "DISABLE"}


def text_of(buffer):
    """The text of a char array member, up to its NUL."""
    low, high = buffer.type.range()
    characters = bytearray()
    for index in range(low, high + 1):
        code = int(buffer[index]) & 0xFF
        if code == 0:
            break
        characters.append(code)
    return characters.decode("latin-1")


class StringPrinter:
    """The text in quotes; an empty String owns no buffer."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        length = int(self.value["m_length"])
        if length <= 0 or int(self.value["m_buffer"]) == 0:
            return ""
        return self.value["m_buffer"].string("latin-1", length=length)

    def display_hint(self):
        return "string"


class ListPrinter:
    """The elements from head to tail; stops after `m_count`, so that a damaged list ends too."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        return "RT_List of %d" % int(self.value["m_count"])

    def children(self):
        node = self.value["m_head"]
        for index in range(int(self.value["m_count"])):
            if int(node) == 0:
                return
            data = node.dereference()["data"]
            yield "[%d]" % index, data
            node = node.dereference()["next"]

    def display_hint(self):
        return "array"


def summary(value):
    """Name, full version and action: what a release or component is called in the log."""
    action = int(value["m_action"])
    return "%s %s: %s" % (text_of(value["m_name"]), text_of(value["m_fullVersion"]), ACTIONS.get(action, str(action)))


class ObjectPrinter:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        return summary(self.value)


class ComponentPrinter(ObjectPrinter):
    def children(self):
        yield "enabled", self.value["m_enabled"]
        yield "updateStatus", self.value["m_updateStatus"]
        yield "shared", self.value["m_shared"]
        yield "source", text_of(self.value["m_sourceLocation"])


class ReleasePrinter(ObjectPrinter):
    def children(self):
        yield "marketingName", self.value["m_marketingName"]
        yield "certificateId", text_of(self.value["m_certificateId"])
        yield "activationDate", self.value["m_activationDate"]
        yield "hours", "%d-%d" % (int(self.value["m_installationStartHour"]), int(self.value["m_installationEndHour"]))
        yield "updateNecessary", self.value["m_updateNecessary"]
        node = self.value["m_components"]["m_head"]
        for index in range(int(self.value["m_components"]["m_count"])):
            if int(node) == 0:
                return
            yield "component[%d]" % index, node.dereference()["data"].dereference()
            node = node.dereference()["next"]


def build():
    printers = gdb.printing.RegexpCollectionPrettyPrinter("7xAutoUpdateTools")
    printers.add_printer("String", "^String$", StringPrinter)
    printers.add_printer("RT_List", "^RT_List<.*>$", ListPrinter)
    printers.add_printer("CRelease", "^CRelease$", ReleasePrinter)
    printers.add_printer("CComponent", "^CComponent$", ComponentPrinter)
    printers.add_printer("AutoUpdateObject", "^AutoUpdateObject$", ObjectPrinter)
    return printers


gdb.printing.register_pretty_printer(gdb.current_objfile(), build(), replace=True)
