"""Readers for the machining simulation's model files, arrays as numpy arrays.

Every call holds the GIL until it returns (one read at a time in the process).
"""
import os
from types import SimpleNamespace
from typing import Literal, Optional, Union

import numpy as np
import numpy.typing as npt

_Path = Union[str, bytes, os.PathLike]
_Unit = Literal["mm", "in"]
_Point = tuple[float, float, float]

class StlMesh(SimpleNamespace):
    points: npt.NDArray[np.float64]  # N x 3
    normals: npt.NDArray[np.float64]  # M x 3
    faces: npt.NDArray[np.uint32]  # F x 3
    face_normals: npt.NDArray[np.uint32]  # F
    form: Literal["ascii", "binary"]

def read_stl(path: _Path, units: _Unit = "mm", file_units: _Unit = "mm") -> StlMesh: ...

class Profile:
    @property
    def kind(self) -> Literal["extrusion", "sweep"]: ...
    @property
    def source(self) -> str: ...
    @property
    def unit(self) -> str: ...
    @property
    def tolerance(self) -> float: ...
    @property
    def z(self) -> Optional[tuple[float, float]]: ...
    @property
    def segments(self) -> list[tuple[Literal["line", "clw", "cclw"], _Point, Optional[_Point]]]: ...
    def polyline(self) -> npt.NDArray[np.float64]: ...

def read_profile(
    path: _Path,
    source: Optional[str] = None,
    units: Optional[_Unit] = None,
    file_units: Optional[_Unit] = None,
) -> Profile: ...
def read_dxf(path: _Path, out_path: _Path, sweep: bool = False, units: _Unit = "mm") -> list[str]: ...
def dxf_contours(path: _Path) -> list[dict]: ...
def tool_tokens(path: _Path) -> list[str]: ...
def read_tool_library(path: _Path) -> list[dict]: ...
class ObjectFile(SimpleNamespace):
    version: float  # e.g. 1.15
    records: list[dict]  # "kind", and for objects "name", "dimensions", "matrix", "vector", "colour", "attachment"
    collisions: Optional[list[tuple[str, str, int, float]]]

def read_objects(path: _Path, units: _Unit = "mm", matrix_as_read: bool = True) -> ObjectFile: ...
def descramble(path: _Path) -> str: ...
