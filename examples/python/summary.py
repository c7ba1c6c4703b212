#!/usr/bin/python3
"""Reads an STL mesh and a DXF drawing with zormodelio and prints a summary.

    PYTHONPATH=build/dev/python/package /usr/bin/python3 examples/python/summary.py [MESH.stl] [DRAWING.dxf]
"""
import pathlib
import sys
import tempfile

import zormodelio

examples = pathlib.Path(__file__).resolve().parents[1]
stl = sys.argv[1] if len(sys.argv) > 1 else examples / "stl" / "cube-binary.stl"
dxf = sys.argv[2] if len(sys.argv) > 2 else examples / "dxf" / "bracket.dxf"

mesh = zormodelio.read_stl(stl)
print(f"{stl}: {mesh.form} STL, {len(mesh.points)} vertices, {len(mesh.normals)} normals, {len(mesh.faces)} faces")
if len(mesh.points):
    print(f"  box {mesh.points.min(axis=0)} to {mesh.points.max(axis=0)}")

print(f"{dxf}:")
for layer in zormodelio.dxf_contours(dxf):
    closed = sum(c["closed"] for c in layer["contours"])
    print(f"  layer {layer['layer']}: {layer['entities']} entities, {len(layer['contours'])} contours ({closed} closed)")
with tempfile.TemporaryDirectory() as folder:
    for written in zormodelio.read_dxf(dxf, pathlib.Path(folder) / "profile.ext"):
        profile = zormodelio.read_profile(written)
        points = profile.polyline()
        print(f"  {pathlib.Path(written).name}: {len(profile.segments)} segments, {len(points)} points stepped "
              f"at tolerance {profile.tolerance} {profile.unit}")
