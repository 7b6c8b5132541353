# What the extension module has is for this package alone.
from typing import Any

def __getattr__(name: str) -> Any: ...
