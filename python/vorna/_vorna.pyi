# The extension module: what it holds is not for programs.
from typing import Any

def __getattr__(name: str) -> Any: ...
