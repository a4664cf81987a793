"""The files that let programs use the library unregistered, made from what registration is made of:
the class table, the registration scripts and the type library's source."""
import pathlib
import re
from xml.sax.saxutils import quoteattr

ROOT = pathlib.Path(__file__).resolve().parents[2]
# Not the library's own name: the loader would look for the manifest inside the library then.
ASSEMBLY = "Tervane.Components"
PLATFORMS = {"x86": "x86", "x64": "amd64"}
# The system's proxies: of automation interfaces, which reads their type library, and of event
# interfaces, which have late-bound members only.
PROXIES = {"interface": "{00020424-0000-0000-C000-000000000046}",
           "dispinterface": "{00020420-0000-0000-C000-000000000046}"}
# The bits of the status that the scripts register for controls, as manifests spell them.
STATUS = {0x1: "recomposeonresize", 0x10: "cantlinkinside", 0x80: "insideout",
          0x100: "activatewhenvisible", 0x400: "invisibleatruntime", 0x20000: "setclientsitefirst"}


def read(path):
    return (ROOT / path).read_text(encoding="utf-8")


def registration_scripts():
    """The scripts of all classes, in the order of the class table."""
    numbers = dict(re.findall(r'^(\d+) REGISTRY "(\w+)\.rgs"', read("resources/Tervane.rc"), re.M))
    rows = re.findall(r"TERVANE_CLASS\((\w+), (\d+),", read("objects/Classes.cpp"))
    if len(rows) != read("component/TERVANELib.idl").count("coclass "):
        raise ValueError("the class table does not have a row for every class")
    for name, number in rows:
        if numbers[number] != name:
            raise ValueError(f"script {number} is not that of {name}")
        yield read(f"resources/{name}.rgs")


def value(script, name):
    found = re.search(rf"^\s*(?:val )?'?{name}'? = s '([^']*)'", script, re.M)
    return found and found[1]


def status_words(number):
    words = [word for bit, word in STATUS.items() if number & bit]
    if sum(bit for bit in STATUS if number & bit) != number:
        raise ValueError(f"status {number:#x} has a bit without a name")
    return ",".join(words)


def class_element(script, library):
    clsid, description = re.search(r"ForceRemove (\{[^}]*\}) = s '([^']*)'", script).groups()
    attributes = {"description": description, "clsid": clsid.upper(), "tlbid": library,
                  "threadingModel": value(script, "ThreadingModel").capitalize(),
                  "progid": value(script, "ProgID")}
    if status := value(script, "1"):
        attributes["miscStatusContent"] = status_words(int(status))
    name = value(script, "VersionIndependentProgID")
    return (f"    <comClass{spell(attributes)}>\n"
            f"      <progid>{name}</progid>\n"
            f"    </comClass>")


def spell(attributes):
    return "".join(f" {name}={quoteattr(text)}" for name, text in attributes.items())


def interface_elements(source, library):
    """The interfaces that calls between threads of different apartments need a proxy for."""
    pattern = r"uuid\(([0-9A-F-]{36})\)[^\]]*\]\s*(interface|dispinterface) (\w+)"
    for iid, kind, name in re.findall(pattern, source):
        attributes = {"name": name, "iid": f"{{{iid}}}", "tlbid": library,
                      "proxyStubClsid32": PROXIES[kind]}
        yield f"  <comInterfaceExternalProxyStub{spell(attributes)}/>"


def identity(arch, version):
    return spell({"type": "win32", "name": ASSEMBLY, "version": f"{version}.0",
                  "processorArchitecture": PLATFORMS[arch]})


def document(*lines):
    return "\n".join(['<?xml version="1.0" encoding="UTF-8" standalone="yes"?>',
                      '<assembly xmlns="urn:schemas-microsoft-com:asm.v1" manifestVersion="1.0">',
                      *lines, "</assembly>", ""])


def library_manifest(arch, version):
    """Describes the classes of Tervane.DLL, beside which it lies."""
    source = read("component/TERVANELib.idl")
    library = "{%s}" % re.search(r"uuid\(([0-9A-F-]{36})\),\s*version\(1\.0\)", source)[1]
    interfaces = list(interface_elements(source, library))
    if len(interfaces) < source.count("coclass "):
        raise ValueError("not every class has an interface of its own")
    type_library = spell({"tlbid": library, "version": "1.0", "helpdir": "", "resourceid": "1"})
    return document(f"  <assemblyIdentity{identity(arch, version)}/>",
                    '  <file name="Tervane.DLL">', f"    <typelib{type_library}/>",
                    *(class_element(script, library) for script in registration_scripts()),
                    "  </file>", *interfaces)


def program_manifest(arch, version):
    """What a program beside the library says to get its classes from there."""
    return document("  <dependency>", "    <dependentAssembly>",
                    f"      <assemblyIdentity{identity(arch, version)}/>",
                    "    </dependentAssembly>", "  </dependency>")
