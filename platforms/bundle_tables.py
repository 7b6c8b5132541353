"""What a macOS bundle tells its loader, and whether it asks for more than it may."""
import re
import subprocess

# In every image that these linkers make, whether it has lazy bindings or not.
NAMED_BY_LINKER = {"dyld_stub_binder"}

problems = []


def check(holds, message):
    if not holds:
        problems.append(message)


def objdump(path, *options):
    command = ["llvm-objdump-14", "--macho", *options, path]
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def rows(path, table, *options):
    """The lines of one of the loader's tables, as lists of columns."""
    lines = objdump(path, f"--{table}", *options).splitlines()
    return [line.split() for line in lines if re.search(r"\b0x[0-9A-F]{8,}\b", line)]


def check_interface(path, exports, libraries, *options):
    """The exports, and each import from the library that has it. `libraries` are texts of link stubs;
    `options` choose the slice of a universal file."""
    exported = {line.split()[1] for line in objdump(path, "--exports-trie", *options).splitlines()
                if line.startswith("0x")}
    check(exported == exports, f"exports {sorted(exported)}")

    names = {re.search(r"install-name:\s*'([^']+)'", text)[1]: set(re.findall(r"\b_\w+", text))
             for text in libraries}
    used = re.findall(r"^\s+(\S+) \(compatibility", objdump(path, "--dylibs-used", *options), re.M)
    check(sorted(used) == sorted(names), f"loads {used}")
    short = {name.rsplit("/", 1)[1].split(".")[0]: symbols for name, symbols in names.items()}
    permitted = {(name, symbol) for name, symbols in short.items() for symbol in symbols}
    bound = set()
    for _, _, address, kind, addend, library, symbol, *more in rows(path, "bind", *options):
        check(kind == "pointer" and addend == "0" and not more, f"odd binding at {address}")
        bound.add((library, symbol))
    for _, _, address, library, symbol, *more in rows(path, "lazy-bind", *options):
        check(not more, f"odd lazy binding at {address}")
        bound.add((library, symbol))
    by_name = {(library, symbol) for library, symbol in bound if symbol not in NAMED_BY_LINKER}
    check(by_name <= permitted, f"imports {sorted(by_name - permitted)}")
    # Which of the C library's functions are called is the compiler's choice.
    unused = {(library, symbol) for library, symbol in permitted - by_name if library != "libSystem"}
    check(not unused, f"doesn't use {sorted(unused)}, which are listed")
    undefined = set(subprocess.run(["llvm-nm-14", "-uj", *options, path], check=True,
                                   capture_output=True, text=True).stdout.split())
    check(undefined - NAMED_BY_LINKER == {symbol for _, symbol in by_name}, "symbols left undefined")
    check(not rows(path, "weak-bind", *options), "weak bindings")
