"""Whose work is in the packages besides ours: a list with versions, and the terms, as the packages that
it was built from tell them."""
import pathlib
import re
import subprocess

DOCUMENTATION = pathlib.Path("/usr/share/doc")
LICENSES = pathlib.Path("/usr/share/common-licenses")


def boost_package():
    """Its name has the version in it."""
    owner = subprocess.run(["dpkg-query", "-S", "/usr/include/boost/regex.hpp"],
                           capture_output=True, text=True, check=True).stdout
    return owner.partition(":")[0]


# What, where in our files, the package that it comes from.
COMPONENTS = [
    ("Boost.Regex", "Tervane.DLL, script_host", boost_package()),
    ("GCC run-time libraries (libgcc, libstdc++, libssp)", "Tervane.DLL, the programs",
     "g++-mingw-w64-i686-win32"),
    ("mingw-w64 run-time and headers", "Tervane.DLL, the programs", "mingw-w64-common"),
    ("NSIS", "the set-up program and its uninstaller", "nsis"),
]
LINE = "=" * 78


def version(package):
    answer = subprocess.run(["dpkg-query", "-W", "-f", "${Version}", package], capture_output=True,
                            text=True, check=True).stdout
    return answer.partition(":")[2] or answer


def copyright_of(package):
    return (DOCUMENTATION / package / "copyright").read_text(encoding="utf-8")


def boost_terms():
    """Boost's own licence; the whole list of its package is about documentation and tools, too."""
    stanza = re.search(r"^License: BSL-1\.0\n((?: .*\n)+)", copyright_of(boost_package()), re.M)
    return "\n".join("" if line == " ." else line[1:] for line in stanza[1].splitlines()) + "\n"


def gcc_terms():
    """The notice of the package, which has the exception for what is compiled, and the licence that
    the exception is from."""
    text = copyright_of("gcc-mingw-w64-base")
    if "GCC RUNTIME LIBRARY EXCEPTION" not in text.upper():
        raise ValueError("the exception for compiled programs is missing")
    return text + "\n\n" + (LICENSES / "GPL-3").read_text(encoding="utf-8")


def component_list(product_version):
    rows = [("Component", "Where", "Version"), ("Tervane", "everywhere", product_version)]
    rows += [(name, where, version(package)) for name, where, package in COMPONENTS]
    widths = [max(len(row[column]) for row in rows) + 2 for column in range(2)]
    return "".join(f"{a:<{widths[0]}}{b:<{widths[1]}}{c}\n" for a, b, c in rows)


def terms():
    texts = [boost_terms(), gcc_terms(), copyright_of("mingw-w64-common"), copyright_of("nsis")]
    parts = ["This product contains or was packed with the following works of others.\n"]
    for (name, where, _), text in zip(COMPONENTS, texts):
        parts.append(f"{LINE}\n{name} (in: {where})\n{LINE}\n\n{text}")
    return "\n".join(parts)
