"""zormodelio against the zormodel tool and the library's own rules, on the
bundled examples and the third-party corpus."""
import json
import os
import pathlib
import subprocess
import sys

import numpy as np
import pytest

import zormodelio as zm

EXAMPLES = pathlib.Path(os.environ.get("ZOR_EXAMPLES", pathlib.Path(__file__).parents[2] / "examples"))
CORPUS = pathlib.Path(os.environ.get("ZOR_CORPUS", pathlib.Path(__file__).parents[3] / "shared" / "corpus"))
ZORMODEL = os.environ.get("ZORMODEL", "")


def corpus(kind):
    folder = CORPUS / kind
    return sorted(folder.iterdir()) if folder.is_dir() else []


def zormodel_json(*args):
    if not ZORMODEL:
        pytest.skip("zormodel not built")
    done = subprocess.run([ZORMODEL, *args, "--json"], capture_output=True)
    return json.loads(done.stdout.decode(errors="surrogateescape")) if done.returncode == 0 else None


STL_FILES = sorted((EXAMPLES / "stl").glob("*.stl")) + corpus("stl")
DXF_FILES = sorted((EXAMPLES / "dxf").glob("*.dxf")) + corpus("dxf")
PROFILES = sorted((EXAMPLES / "profiles").iterdir()) + [
    p for p in sorted((EXAMPLES / "foreign").iterdir()) if p.suffix != ".pol"
]


@pytest.mark.parametrize("path", STL_FILES, ids=lambda p: p.name)
def test_stl_matches_the_tool(path):
    expected = zormodel_json("stl", str(path))
    if expected is None:
        with pytest.raises(ValueError, match=str(path)):
            zm.read_stl(path)
        return
    mesh = zm.read_stl(path)
    assert mesh.form == expected["form"]
    assert mesh.points.shape == (expected["points"], 3) and mesh.points.dtype == np.float64
    assert mesh.normals.shape == (expected["normals"], 3) and mesh.normals.dtype == np.float64
    assert mesh.faces.shape == (expected["faces"], 3) and mesh.faces.dtype == np.uint32
    assert mesh.face_normals.shape == (expected["faces"],) and mesh.face_normals.dtype == np.uint32
    if len(mesh.points):
        np.testing.assert_allclose(mesh.points.min(axis=0), expected["min"], rtol=1e-15)
        np.testing.assert_allclose(mesh.points.max(axis=0), expected["max"], rtol=1e-15)
    # Every index names an entry of its array, and every entry is used.
    assert set(np.unique(mesh.faces)) == set(range(len(mesh.points)))
    assert set(np.unique(mesh.face_normals)) == set(range(len(mesh.normals)))


def test_stl_ascii_and_binary_cube_agree_and_convert_units():
    ascii, binary = zm.read_stl(EXAMPLES / "stl/cube-ascii.stl"), zm.read_stl(EXAMPLES / "stl/cube-binary.stl")
    assert (ascii.form, binary.form) == ("ascii", "binary")
    for name in ("points", "normals", "faces", "face_normals"):
        np.testing.assert_array_equal(getattr(ascii, name), getattr(binary, name))
    inches = zm.read_stl(EXAMPLES / "stl/cube-ascii.stl", units="in")
    np.testing.assert_allclose(inches.points * 25.4, ascii.points)
    with pytest.raises(ValueError, match="units"):
        zm.read_stl(EXAMPLES / "stl/cube-ascii.stl", units="cm")


def test_stl_faces_are_views_of_the_library_buffer():
    mesh = zm.read_stl(EXAMPLES / "stl/cube-binary.stl")
    assert not mesh.points.flags.owndata and not mesh.faces.flags.owndata
    # faces and face_normals share the one buffer of four per face.
    assert mesh.faces.base is mesh.face_normals.base
    assert mesh.face_normals.ctypes.data == mesh.faces.ctypes.data + 12


@pytest.mark.parametrize("path", PROFILES, ids=lambda p: p.name)
def test_profile_polyline_runs_to_the_last_end_point(path):
    profile = zm.read_profile(path)
    expected = zormodel_json("profile", str(path))
    assert (profile.kind, profile.unit, profile.tolerance) == (expected["kind"], expected["unit"], expected["tolerance"])
    assert profile.z == (tuple(expected["z"]) if "z" in expected else None)
    assert profile.segments
    for (kind, end, centre), theirs in zip(profile.segments, expected["segments"], strict=True):
        assert kind == theirs["kind"]
        np.testing.assert_allclose(end, theirs["end"], rtol=1e-5)  # the tool prints 6 digits
        if centre is None:
            assert "centre" not in theirs
        else:
            np.testing.assert_allclose(centre, theirs["centre"], rtol=1e-5)
    line = profile.polyline()
    assert line.ndim == 2 and line.shape[1] == 3 and len(line) >= len(profile.segments)
    np.testing.assert_allclose(line[-1], profile.segments[-1][1], atol=1e-12)
    # An arc is stepped into several points, never stood for by its end alone.
    if any(s[0] != "line" for s in profile.segments):
        assert len(line) > len(profile.segments)


def test_profile_units_and_sources():
    inch = zm.read_profile(EXAMPLES / "profiles/keyhole-inch.ext")
    mm = zm.read_profile(EXAMPLES / "profiles/keyhole-inch.ext", units="mm")
    assert (inch.unit, mm.unit, inch.source) == ("in", "mm", "native")
    np.testing.assert_allclose(mm.polyline()[-1], inch.polyline()[-1] * 25.4)
    sirius_in = zm.read_profile(EXAMPLES / "foreign/sirius.txt", units="mm", file_units="in")
    sirius = zm.read_profile(EXAMPLES / "foreign/sirius.txt", source="sirius")
    np.testing.assert_allclose(np.array(sirius_in.segments[-1][1]), np.array(sirius.segments[-1][1]) * 25.4)
    with pytest.raises(ValueError, match="unknown profile source"):
        zm.read_profile(EXAMPLES / "foreign/sirius.txt", source="autocad")


@pytest.mark.parametrize("path", DXF_FILES, ids=lambda p: p.name)
def test_dxf_contours_match_the_tool_and_read_dxf_writes_each_layer(path, tmp_path):
    expected = zormodel_json("contours", str(path))
    if expected is None:
        with pytest.raises(ValueError, match="ENTITIES"):
            zm.dxf_contours(path)
        return
    layers = zm.dxf_contours(path)
    assert [layer["entities"] for layer in layers] == [layer["entities"] for layer in expected["layers"]]
    for ours, theirs in zip(layers, expected["layers"]):
        if ours["layer"].isascii():  # the tool escapes the rest
            assert ours["layer"] == theirs["name"]
        assert [(c["closed"], c["segments"], c["written"]) for c in ours["contours"]] == [
            (c["closed"], c["segments"], c["written"]) for c in theirs["contours"]
        ]
    written = zm.read_dxf(path, tmp_path / "out.ext")
    assert len(written) == len(layers) and all(pathlib.Path(p).is_file() for p in written)
    for name in written:
        assert zm.read_profile(name).kind == "extrusion"


def test_dxf_sweep_and_single_layer_name(tmp_path):
    with pytest.raises(FileNotFoundError, match="missing"):
        zm.read_dxf(EXAMPLES / "dxf/shaft.dxf", tmp_path / "missing" / "shaft.swp")
    written = zm.read_dxf(EXAMPLES / "dxf/shaft.dxf", tmp_path / "shaft.swp", sweep=True)
    assert written == [str(tmp_path / "shaft.swp")]
    assert zm.read_profile(written[0]).kind == "sweep"


def tool_as_tool_json(entry):
    """read_tool_library's dict in the shape of `zormodel tools --json`."""
    out = {"name": entry["name"]}
    if entry["attributes"]:
        out["attributes"] = [{"name": k, "value": v} for k, v in entry["attributes"].items()]
    if "value" in entry:
        out["value"] = entry["value"]
    if entry["children"]:
        out["values"] = [tool_as_tool_json(c) for c in entry["children"]]
    return out


def strip_kind(report):
    if isinstance(report, list):
        return [strip_kind(r) for r in report]
    if isinstance(report, dict):
        return {k: strip_kind(v) for k, v in report.items() if k != "kind"}
    return report


def test_tool_library_matches_the_tool():
    path = EXAMPLES / "tools/tool-library.xml"
    tools = zm.read_tool_library(path)
    assert [t["attributes"]["Name"] for t in tools] == ["Drill 8", "End mill 12", "Ball mill 6"]
    assert [tool_as_tool_json(t) for t in tools] == strip_kind(zormodel_json("tools", str(path)))
    tokens = zm.tool_tokens(path)
    assert tokens[:5] == ["TOOL", "Name", "Drill 8", "Number", "1"] and tokens[-1] == "OptiPath"
    # The walk restarts for each call: the library holds no document between them.
    assert zm.tool_tokens(path) == tokens


def test_descramble_gives_the_plain_file():
    scrambled = zm.descramble(EXAMPLES / "objects/scrambled-1.13.obj")
    assert "// Version: 1.13" in scrambled.splitlines()
    plain = EXAMPLES / "objects/primitives-1.15.obj"
    lines = [line.strip() for line in plain.read_text().splitlines() if line.strip()]
    assert zm.descramble(plain).splitlines() == lines


OBJECT_FILES = sorted((EXAMPLES / "objects").glob("*.obj"))


@pytest.mark.parametrize("units, as_read", [("mm", True), ("in", False)])
@pytest.mark.parametrize("path", OBJECT_FILES, ids=lambda p: p.name)
def test_objects_match_the_tool(path, units, as_read):
    flags = ["--units", units] + (["--matrix-as-read"] if as_read else [])
    expected = zormodel_json("objects", str(path), *flags)
    here = os.getcwd()
    scene = zm.read_objects(path, units=units, matrix_as_read=as_read)
    assert os.getcwd() == here  # a file reference moves the library's working directory, not ours
    assert round(scene.version * 100) == expected["version"]
    assert [r["kind"] for r in scene.records] == [r["kind"] for r in expected["records"]]
    for ours, theirs in zip(scene.records, expected["records"]):
        assert ours.get("name") == theirs.get("name")
        if "matrix" in ours:
            np.testing.assert_allclose(ours["matrix"], theirs["matrix"], rtol=1e-15)
            assert list(ours["vector"]) == theirs["vector"]
        if ours["kind"] in ("cube", "cylinder", "cone", "sphere", "torus"):
            assert list(ours["dimensions"].values()) == theirs["dimensions"]
        if ours["kind"] == "mesh":
            assert ours["vertices"].shape == (theirs["vertices"], 3)
            assert ours["corners"].shape == (3 * theirs["triangles"], 3)
            np.testing.assert_allclose(ours["vertices"].min(axis=0), theirs["min"], rtol=1e-15)
        if ours["kind"] in ("extrusion", "revolution"):
            assert [(s[0], list(s[1])) for s in ours["segments"]] == [
                (s["kind"], s["end"]) for s in theirs["segments"] if s["kind"] != "empty"
            ]
    pairs = [(p["first"], p["second"], p["code"], p["value"]) for p in expected.get("collisions", [])]
    assert (scene.collisions or []) == pairs


WRONG_KIND = [
    (zm.read_objects, "stl/cube-ascii.stl", "not an object file"),
    (zm.read_stl, "tools/tool-library.xml", None),  # any text reads as an empty ASCII STL, as StlFile does
    (zm.read_profile, "stl/cube-binary.stl", "not a profile"),
    (lambda p: zm.read_profile(p, source="native"), "foreign/sirius.txt", "not a native profile"),
    (lambda p: zm.read_profile(p, source="vericut"), "foreign/sirius.txt", "not a readable vericut profile"),
    (zm.dxf_contours, "stl/cube-ascii.stl", "ENTITIES"),
    (lambda p: zm.read_dxf(p, "/tmp/out.ext"), "stl/cube-ascii.stl", "ENTITIES"),
    (zm.tool_tokens, "stl/cube-ascii.stl", "well-formed"),
    (zm.read_tool_library, "dxf/bracket.dxf", "well-formed"),
]


@pytest.mark.parametrize("read, name, reason", WRONG_KIND, ids=lambda x: getattr(x, "__name__", str(x)))
def test_wrong_kind_raises_value_error_naming_the_file(read, name, reason):
    if reason is None:
        assert len(read(EXAMPLES / name).points) == 0
        return
    with pytest.raises(ValueError, match=reason) as raised:
        read(EXAMPLES / name)
    assert str(EXAMPLES / name) in str(raised.value)


def test_truncated_binary_stl_raises_with_the_reader_reason(tmp_path):
    whole = (EXAMPLES / "stl/cube-binary.stl").read_bytes()
    cut = tmp_path / "cut.stl"
    cut.write_bytes(whole[:-30])
    with pytest.raises(ValueError, match=r"cut.stl: not a readable STL file \(Error reading a"):
        zm.read_stl(cut)


def test_running_out_of_memory_raises_memory_error(tmp_path):
    # 300,000 facets of random points: the index needs far more than the 40 MiB left to the process.
    facets = np.zeros(300000, dtype=[("normal", "<f4", 3), ("vertices", "<f4", 9), ("attribute", "<u2")])
    facets["vertices"] = np.random.default_rng(1).random((len(facets), 9), dtype=np.float32)
    path = tmp_path / "large.stl"
    path.write_bytes(bytes(80) + np.uint32(len(facets)).tobytes() + facets.tobytes())
    code = (
        "import resource, sys, zormodelio\n"
        "size = int(open('/proc/self/statm').read().split()[0]) * resource.getpagesize() + (40 << 20)\n"
        "resource.setrlimit(resource.RLIMIT_AS, (size, size))\n"
        "try:\n"
        "    zormodelio.read_stl(sys.argv[1])\n"
        "except MemoryError as e:\n"
        "    print('MemoryError:', e)\n"
    )
    done = subprocess.run([sys.executable, "-c", code, str(path)], capture_output=True, text=True)
    assert done.returncode == 0, done.stderr
    assert done.stdout == "MemoryError: %s: the STL index ran out of memory\n" % path


READERS = [
    zm.read_stl,
    zm.read_objects,
    zm.read_profile,
    zm.dxf_contours,
    lambda p: zm.read_dxf(p, "/tmp/out.ext"),
    zm.tool_tokens,
    zm.read_tool_library,
    zm.descramble,
]


@pytest.mark.parametrize("read", READERS)
def test_missing_file_and_folder_raise_os_errors(read, tmp_path):
    with pytest.raises(FileNotFoundError) as raised:
        read(tmp_path / "missing.file")
    assert raised.value.filename == str(tmp_path / "missing.file")
    with pytest.raises(IsADirectoryError):
        read(tmp_path)


def resident_bytes():
    with open("/proc/self/statm") as statm:
        return int(statm.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")


@pytest.mark.parametrize(
    "read, name",
    [
        (zm.read_stl, "stl/cube-binary.stl"),
        (lambda p: zm.read_profile(p).polyline(), "profiles/rounded-plate.ext"),
        (zm.dxf_contours, "dxf/bracket.dxf"),
        (zm.read_tool_library, "tools/tool-library.xml"),
        (zm.descramble, "objects/scrambled-1.13.obj"),
        (zm.read_objects, "objects/scene-1.15.obj"),
        (lambda p: pytest.raises(ValueError, zm.read_stl, p), "stl/truncated"),
    ],
)
def test_a_thousand_reads_do_not_grow_memory(read, name, tmp_path):
    path = EXAMPLES / name
    if name == "stl/truncated":
        path = tmp_path / "truncated.stl"
        path.write_bytes((EXAMPLES / "stl/cube-binary.stl").read_bytes()[:200])
    for _ in range(100):  # warm up the allocator and the interpreter's caches
        read(path)
    before = resident_bytes()
    for _ in range(1000):
        read(path)
    assert resident_bytes() - before < 512 * 1024


def test_example_script_summarises_the_examples():
    done = subprocess.run([sys.executable, str(EXAMPLES / "python/summary.py")], capture_output=True, text=True)
    assert done.returncode == 0, done.stderr
    assert "binary STL, 8 vertices, 6 normals, 12 faces" in done.stdout
    assert "layer Holes: 4 entities, 2 contours (2 closed)" in done.stdout


def test_stub_declares_every_public_name():
    import ast

    stub = ast.parse((pathlib.Path(__file__).parents[1] / "zormodelio.pyi").read_text())
    declared = {node.name for node in stub.body if isinstance(node, (ast.FunctionDef, ast.ClassDef))}
    assert {name for name in dir(zm) if not name.startswith("_")} <= declared
