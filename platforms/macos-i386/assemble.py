#!/usr/bin/env python3
"""Fits the compiler's assembly to a linker that makes unsound 32-bit images out of it as it stands.

    assemble.py COMPILER_OUTPUT.s RESULT.s LIBRARY.tbd...

The linker's own stubs for calls into libraries can't move in memory, it leaves the pointers of the
compiler's pointer section unbound, and it loses the offset of an L label inside an atom. So calls
to the libraries' functions go to stubs made here, the pointers become plain data words, and an L
label outside code, strings and literals becomes an l label, which the linker sees as a symbol.
"""
import re
import sys

ANONYMOUS_LABELS_WORK = ("__TEXT,__text", "__TEXT,__cstring", "__TEXT,__literal")
STUB = """l{0}$stub:
	calll	L{0}$pc
L{0}$pc:
	popl	%eax
	movl	l{0}$entry-L{0}$pc(%eax), %eax
	jmpl	*%eax
"""
ENTRY = "l{0}$entry:\n\t.long\t{0}\n"

source, target, *libraries = sys.argv[1:]
stubs = " ".join(open(path).read().partition("symbols:")[2] for path in libraries)
imports = set(re.findall(r"\b_\w+", stubs))
text = re.sub(r"[ \t]*##.*", "", open(source).read())

called = set()


def stub_of(call):
    if call[2] not in imports:
        return call[0]
    called.add(call[2])
    return f"{call[1]}l{call[2]}$stub"


text = re.sub(r"^(\s+(?:calll?|jmpl?|j[a-z]+)\s+)(_\w+)$", stub_of, text, flags=re.M)
text = text.replace("__IMPORT,__pointers,non_lazy_symbol_pointers", "__DATA,__nlp,regular")
text = re.sub(r"\.indirect_symbol\s+(\S+)\n\s+\.long\s+0\b", r".long\t\1", text)

section, renamed = "__TEXT,__text", set()
for line in text.splitlines():
    if found := re.match(r"\s+\.section\s+(\S+?,[^,\s]+)", line):
        section = found[1]
    elif (found := re.match(r"(L[^\s:]*):", line)) and not section.startswith(ANONYMOUS_LABELS_WORK):
        renamed.add(found[1])
text = re.sub(r"(?<![\w$.])L[\w$.]+", lambda label: "l" + label[0][1:] if label[0] in renamed else label[0], text)

head, directive, _ = text.rpartition("\n.subsections_via_symbols")
assert directive, f"{source}: not the compiler's output"
with open(target, "w") as result:
    result.write(head + "\n\t.section\t__TEXT,__text,regular,pure_instructions\n")
    result.writelines(STUB.format(name) for name in sorted(called))
    result.write("\t.section\t__DATA,__nlp,regular\n\t.p2align\t2\n")
    result.writelines(ENTRY.format(name) for name in sorted(called))
    result.write(directive.lstrip() + "\n")
