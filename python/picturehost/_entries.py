"""Makes methods, functions and classes of what the plug-in registered."""

import collections
import inspect

from . import _picturehost

# What byref parameters start as where they are left out; None for objects.
ZERO = {"integer": 0, "uint32": 0, "double": 0.0, "boolean": False, "color": 0}


def _group(methods):
    """Overloads by their common name, in the order of registration."""
    groups = collections.defaultdict(list)
    for method in methods:
        groups[method.name].append(method)
    return groups


def signature(method, own_object):
    """What inspect and help show of one declaration."""
    kind = inspect.Parameter.POSITIONAL_OR_KEYWORD
    parameters = [inspect.Parameter("self", inspect.Parameter.POSITIONAL_ONLY)] if own_object else []
    for declared in method.parameters:
        default = inspect.Parameter.empty
        if declared.has_default:
            default = declared.default
        elif declared.byref:
            default = ZERO.get(declared.type)
        parameters.append(inspect.Parameter(declared.name, kind, default=default))
    return inspect.Signature(parameters)


def _describe(overloads):
    lines = [method.declaration for method in overloads]
    purpose = "A method of the plug-in's, as it declares it."
    if any(method.assignable for method in overloads):
        purpose = "A pair of the plug-in's: read and assigned with its arguments in brackets."
    return "\n".join(lines) + "\n\n" + purpose


def _result(method_name, result_type, result, byrefs):
    if not byrefs:
        return result
    given = collections.namedtuple(method_name + "Result", byrefs)(**byrefs)
    if isinstance(result, bool):
        return given if result else None
    return given if result_type == "" else (result, given)


def _make_function(class_name, overloads):
    """A function with a method's name; of classes and extensions it takes the object first."""
    name, own_object = overloads[0].name, class_name != ""
    result_type = overloads[0].result

    if own_object:

        def function(self, /, *args, **kwargs):
            result, byrefs = _picturehost.call(class_name, name, self, args, kwargs)
            return _result(name, result_type, result, byrefs)

    else:

        def function(*args, **kwargs):
            result, byrefs = _picturehost.call(class_name, name, None, args, kwargs)
            return _result(name, result_type, result, byrefs)

    function.__name__ = name
    function.__qualname__ = f"{class_name}.{name}" if own_object else name
    function.__module__ = "picturehost"
    function.__doc__ = _describe(overloads)
    if len(overloads) == 1:
        function.__signature__ = signature(overloads[0], own_object)
    return function


class BoundPair:
    """A get/set pair of one object: pair[arguments] reads, pair[arguments] = value assigns."""

    __slots__ = ("_class_name", "_get", "_self")

    def __init__(self, class_name, get, own_object):
        self._class_name, self._get, self._self = class_name, get, own_object

    def __call__(self, *args, **kwargs):
        return self._get(self._self, *args, **kwargs)

    def __getitem__(self, key):
        return self._get(self._self, *_arguments(key))

    def __setitem__(self, key, value):
        _picturehost.assign(self._class_name, self._get.__name__, self._self, _arguments(key), value)

    def __repr__(self):
        return f"<picturehost.{self._get.__qualname__} of {self._self!r}>"


def _arguments(key):
    return key if isinstance(key, tuple) else (key,)


class Pair:
    """Gives each object its BoundPair."""

    def __init__(self, class_name, get):
        self._class_name, self._get = class_name, get
        self.__doc__ = get.__doc__

    def __get__(self, own_object, owner=None):
        return self if own_object is None else BoundPair(self._class_name, self._get, own_object)

    def __set__(self, own_object, value):
        raise AttributeError(f"{self._get.__name__} is assigned with its arguments in brackets")


def _methods(class_name, methods):
    for name, overloads in _group(methods).items():
        function = _make_function(class_name, overloads)
        assignable = any(method.assignable for method in overloads)
        yield name, Pair(class_name, function) if assignable else function


def _make_property(declared):
    name = declared.name
    return property(
        lambda self: self._get(name),
        lambda self, value: self._set(name, value),
        doc=f"{name} as {declared.type_name}\n\nA property of the plug-in's.",
    )


def _make_class(registered):
    properties = {declared.name: _make_property(declared) for declared in registered.properties}
    name = registered.name

    def __init__(self, **values):
        _picturehost.Instance.__init__(self, name)
        for key, value in values.items():
            if key not in properties:
                raise TypeError(f"{name} has no property {key}; it has {', '.join(properties)}")
            setattr(self, key, value)

    body = dict(properties, **dict(_methods(name, registered.methods)), __init__=__init__)
    body["__doc__"] = f"Class {name} of the plug-in's. Properties may be given when it is made."
    body["__module__"] = "picturehost"
    return type(name, (_picturehost.Instance,), body)


def add_to(names):
    """Adds classes and global methods to a module's names, and methods to the classes it has."""
    for registered in _picturehost.classes():
        if not registered.extension:
            names[registered.name] = _make_class(registered)
            continue
        for name, method in _methods(registered.name, registered.methods):
            setattr(names[registered.name], name, method)
    for name, overloads in _group(_picturehost.global_methods()).items():
        names[name] = _make_function("", overloads)
