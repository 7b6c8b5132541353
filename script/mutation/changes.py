"""What is written in the place of an operator or a number."""

import re

RELATIONS = {"<": ("<=", ">="), "<=": ("<", ">"), ">": (">=", "<="), ">=": (">", "<"), "==": ("!=",), "!=": ("==",)}
ARITHMETIC = {"+": ("-",), "-": ("+",), "*": ("/",), "/": ("*",), "%": ("/",)}
BITS = {"&": ("|",), "|": ("&",), "^": ("|",), "<<": (">>",), ">>": ("<<",)}
BOOLEANS = {"&&": ("||",), "||": ("&&",)}
COMPOUND = {
    "+=": "-=", "-=": "+=", "*=": "/=", "/=": "*=", "%=": "/=",
    "|=": "&=", "&=": "|=", "^=": "|=", "<<=": ">>=", ">>=": "<<=",
}  # fmt: skip
BINARY = {
    **{sign: ("relation", new) for sign, new in RELATIONS.items()},
    **{sign: ("arithmetic", new) for sign, new in ARITHMETIC.items()},
    **{sign: ("bits", new) for sign, new in BITS.items()},
    **{sign: ("boolean", new) for sign, new in BOOLEANS.items()},
}
UNARY = {"-": "sign", "~": "bits", "!": "boolean"}


def changed_numbers(text):
    """0 and 1 become each other, any other number one more."""
    digits, suffix = re.fullmatch(r"(0[xX][0-9a-fA-F']+|[\d'.]+(?:[eE][-+]?\d+)?)([uUlLfF]*)", text).groups()
    digits = digits.replace("'", "")
    if digits[:2] in ("0x", "0X"):
        return [f"0x{int(digits, 16) + 1:0{len(digits) - 2}X}{suffix}"]
    if re.search(r"[.eE]", digits):
        value = float(digits)
        return [("1.0" if value == 0 else "0.0" if value == 1 else repr(value + 1)) + suffix]
    value = int(digits)
    return [("1" if value == 0 else "0" if value == 1 else str(value + 1)) + suffix]
