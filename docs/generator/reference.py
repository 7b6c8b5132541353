"""The reference as data: docs/reference/*.yaml, held against what the plug-in registers."""

import json
import pathlib
import re
import subprocess

import yaml

FOLDER = pathlib.Path(__file__).resolve().parent.parent / "reference"
METHOD_FIELDS = {"call", "purpose", "parameters", "formula", "result", "failures", "oddities", "example"}
CLASS_FIELDS = {"class", "purpose", "properties", "methods", "formula", "result", "failures", "oddities", "example"}
PARAMETER_FIELDS = {"unit", "range", "about"}
EXAMPLE_FIELDS = {"photo", "program", "run", "python"}


class Mistake(Exception):
    """Something that the reference says wrongly or not at all."""


def registered(picturehost):
    """What the plug-in registers, by the name that the reference has for it.

    That is the name with the names of its parameters for a method, as overloads need it, and the
    name alone for a class.
    """
    listing = json.loads(subprocess.check_output([picturehost, "list", "--json"], text=True))
    found = {}
    for method in listing["globalMethods"]:
        found[_call(method)] = method | {"kind": "Global method"}
    for entry in listing["classes"]:
        if entry["extension"]:
            for method in entry["methods"]:
                found[_call(method)] = method | {"kind": f"Method of {entry['name']}"}
        else:
            found[entry["name"]] = entry | {"kind": "Class"}
    return found


def load(picturehost):
    """The families in their order, each entry completed with what was registered under its name.

    Raises Mistake where an entry is missing, unknown, or lacks a field.
    """
    known = registered(picturehost)
    common = _read("common")
    families = []
    seen = set()
    for name in common["families"]:
        family = _read(name) | {"file": name}
        _require(name, family, {"title", "about", "picture", "entries"})
        for entry in family["entries"]:
            key = entry.get("call") or entry.get("class")
            if key not in known:
                raise Mistake(f"{name}: the plug-in registers no {key}")
            if key in seen:
                raise Mistake(f"{name}: {key} is here twice")
            seen.add(key)
            _complete(entry, key, known[key], family, common)
        families.append(family)
    files = {path.stem for path in FOLDER.glob("*.yaml")} - {"common"}
    if unlisted := files - set(common["families"]):
        raise Mistake(f"not among the families: {', '.join(sorted(unlisted))}")
    if missing := set(known) - seen:
        raise Mistake("the reference lacks " + "; ".join(sorted(missing)))
    return families


def _read(name):
    return yaml.safe_load((FOLDER / f"{name}.yaml").read_text())


def _call(method):
    return f"{method['name']}({', '.join(parameter['name'] for parameter in method['parameters'])})"


def _require(where, data, fields, optional=frozenset()):
    if missing := fields - set(data):
        raise Mistake(f"{where} lacks {', '.join(sorted(missing))}")
    if optional and (unknown := set(data) - fields - optional):
        raise Mistake(f"{where} has no use for {', '.join(sorted(unknown))}")


def _complete(entry, key, method, family, common):
    is_class = "class" in entry
    _require(key, entry, CLASS_FIELDS if is_class else METHOD_FIELDS, {"variant"})
    _require(f"the example of {key}", entry["example"], EXAMPLE_FIELDS, {"only_values", "note", "other"})
    for field in ("purpose", "formula", "result"):
        if not entry[field] or not entry[field].strip():
            raise Mistake(f"{key} lacks its {field}")
    entry["example"].setdefault("only_values", False)
    entry["key"] = key
    entry["name"] = method["name"]
    entry["kind"] = method["kind"]
    entry["title"] = method["name"] + (f" ({entry['variant']})" if "variant" in entry else "")
    entry["anchor"] = re.sub(r"[^a-z0-9]+", "-", entry["title"].lower()).strip("-")
    entry["result"] = common["results"].get(entry["result"], entry["result"])
    entry["failures"] = [
        common["failures"][failure] if isinstance(failure, str) else failure for failure in entry["failures"]
    ]
    for failure in entry["failures"]:
        _require(f"a failure of {key}", failure, {"when", "then"})
    if is_class:
        _complete_class(entry, method)
    else:
        _complete_method(entry, method, family, common)


def _complete_method(entry, method, family, common):
    key = entry["key"]
    entry["declaration"] = method["declaration"]
    entry["assignable"] = method["assignable"]
    names = [parameter["name"] for parameter in method["parameters"]]
    if unknown := set(entry["parameters"]) - set(names):
        raise Mistake(f"{key} has no parameter {', '.join(sorted(unknown))}")
    about = common["parameters"] | family.get("parameters", {}) | entry["parameters"]
    rows = []
    for parameter in method["parameters"]:
        name = parameter["name"]
        if name not in about:
            raise Mistake(f"{key} says nothing of its parameter {name}")
        _require(f"parameter {name} of {key}", about[name], PARAMETER_FIELDS)
        rows.append(about[name] | parameter | {"default": _default(parameter)})
    entry["parameters"] = rows


def _complete_class(entry, registered_class):
    key = entry["key"]
    names = [declared["name"] for declared in registered_class["properties"]]
    if set(entry["properties"]) != set(names):
        raise Mistake(f"{key}: other properties than registered: {set(entry['properties']) ^ set(names)}")
    rows = []
    for declared in registered_class["properties"]:
        about = entry["properties"][declared["name"]]
        _require(f"property {declared['name']} of {key}", about, PARAMETER_FIELDS | {"default"})
        rows.append(about | declared)
    entry["properties"] = rows
    declarations = [method["declaration"] for method in registered_class["methods"]]
    if set(entry["methods"]) != set(declarations):
        raise Mistake(f"{key}: other methods than registered: {set(entry['methods']) ^ set(declarations)}")


def _default(parameter):
    """A default as a program would write it; None where the parameter has none."""
    if "default" not in parameter:
        return None
    value = parameter["default"]
    if value is None:
        return "nil"
    return str(value).lower() if isinstance(value, bool) else str(value)
