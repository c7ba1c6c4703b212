# Runs zormodel for one CTest case. Plain cases (MODE run): ARGS, then the
# exit code wanted and regular expressions for standard output and error.
# The other modes build their inputs in WORK and check JSON with string(JSON).
cmake_minimum_required(VERSION 3.19)

function(check what)
  if(NOT (${ARGN}))
    message(FATAL_ERROR "${what}\nexit ${rc}\nstdout: ${out}\nstderr: ${err}")
  endif()
endfunction()

macro(zormodel)
  execute_process(COMMAND ${ZORMODEL} ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
endmacro()

string(ASCII 233 e_acute)
string(ASCII 195 169 e_acute_utf8)
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})

# A drawing with what the reader leaves out: a CIRCLE, a LINE without Z, a
# layer name with a blank, and a layer name that is not UTF-8.
function(write_leaky_dxf path)
  set(line "0\nLINE\n8\nLay${e_acute}r\n10\n0\n20\n0\n30\n0\n11\n10\n21\n0\n31\n0\n")
  set(noz "0\nLINE\n8\nMy Layer\n10\n0\n20\n0\n11\n5\n21\n5\n")
  set(circle "0\nCIRCLE\n8\n0\n10\n0\n20\n0\n40\n1\n0\nCIRCLE\n8\n0\n10\n5\n20\n0\n40\n1\n")
  file(WRITE ${path} "0\nSECTION\n2\nENTITIES\n${line}${noz}${circle}0\nENDSEC\n0\nEOF\n")
endfunction()

if(MODE STREQUAL "run")
  zormodel(${ARGS})
  check("exit code ${EXIT} wanted" rc EQUAL EXIT)
  if(DEFINED STDOUT)
    check("stdout should match ${STDOUT}" out MATCHES "${STDOUT}")
  endif()
  if(DEFINED STDERR)
    check("stderr should match ${STDERR}" err MATCHES "${STDERR}")
  endif()

elseif(MODE STREQUAL "info_folder")
  # The examples with one file of no kind among them: every file reported,
  # the bad one failed, the rest ok, exit 1.
  file(COPY ${EXAMPLES}/ DESTINATION ${WORK}/examples PATTERN host EXCLUDE PATTERN python EXCLUDE)  # sources, not models
  file(WRITE ${WORK}/examples/stl/garbage.stl "this is not a mesh\n")
  file(GLOB_RECURSE files ${WORK}/examples/*)
  list(LENGTH files fileCount)
  zormodel(info --json ${WORK}/examples)
  check("info exits 1 when a file fails" rc EQUAL 1)
  check("the failure is counted" err MATCHES "1 of ${fileCount} files failed")
  string(JSON n LENGTH "${out}")
  check("one object per file" n EQUAL fileCount)
  math(EXPR last "${n} - 1")
  set(failed "")
  foreach(i RANGE ${last})
    string(JSON status GET "${out}" ${i} status)
    string(JSON file GET "${out}" ${i} file)
    if(status STREQUAL "failed")
      list(APPEND failed ${file})
    endif()
  endforeach()
  list(LENGTH failed failedCount)
  check("only the garbage file fails" failedCount EQUAL 1 AND failed MATCHES "garbage.stl$")
  string(JSON kind GET "${out}" 0 kind)
  check("the first file is a DXF drawing" kind STREQUAL "dxf")

elseif(MODE STREQUAL "json_latin1")
  # A layer name that is not UTF-8 comes out as its Latin-1 reading in JSON
  # that a parser accepts.
  write_leaky_dxf(${WORK}/latin1.dxf)
  foreach(command contours info)
    zormodel(${command} --json ${WORK}/latin1.dxf)
    if(command STREQUAL "info")
      string(JSON name ERROR_VARIABLE parseError GET "${out}" 0 layers 0 name)
    else()
      string(JSON name ERROR_VARIABLE parseError GET "${out}" layers 0 name)
    endif()
    check("${command}: valid JSON" parseError STREQUAL "NOTFOUND")
    check("${command}: Latin-1 reading" name STREQUAL "Lay${e_acute_utf8}r")
    check("${command}: ASCII output" NOT out MATCHES "[${e_acute}]")
  endforeach()

elseif(MODE STREQUAL "dxf_warnings")
  write_leaky_dxf(${WORK}/leaky.dxf)
  zormodel(dxf ${WORK}/leaky.dxf ${WORK}/out.ext)
  check("the drawing is still written" rc EQUAL 0)
  string(REGEX MATCHALL "warning[^\n]*" warnings "${err}")
  set(wanted
      "warning: ${WORK}/leaky.dxf: 2 CIRCLE entities left out (only LINE and ARC are read)"
      "warning: ${WORK}/leaky.dxf: 1 LINE without group 31 (end Z) left out"
      "warning: ${WORK}/leaky.dxf: 1 layer name cut at a blank")
  check("one counted line per omission" warnings STREQUAL wanted)

elseif(MODE STREQUAL "stl_binary_reason")
  # Text that starts as ASCII STL but goes to the binary reader: the reason
  # is said, then what the tool concluded, last.
  file(WRITE ${WORK}/short.stl "solid s\nendsolid s\n")
  string(REPEAT "x" 40 pad)
  file(WRITE ${WORK}/accent.stl "solid ${pad}${e_acute}\nfacet normal 0 0 1\n${pad}${pad}${pad}\nendsolid\n")
  foreach(case "short.stl|the file is under 150 bytes" "accent.stl|byte 0xE9 at offset 46")
    string(REPLACE "|" ";" case "${case}")
    list(GET case 0 file)
    list(GET case 1 reason)
    zormodel(stl ${WORK}/${file})
    check("${file}: reason" err MATCHES "starts as ASCII STL but is read as binary \\(${reason}\\)")
    check("${file}: conclusion last" err MATCHES "the binary STL read failed \\(see above\\)\n$")
    check("${file}: exit 1" rc EQUAL 1)
  endforeach()
elseif(MODE STREQUAL "convert_readback")
  # Each output read back by our own readers (OBJ and PLY by their counts):
  # IN, OUT, then the command that reads OUT back and what it must print.
  set(rows
      "stl/cube-ascii.stl|cube.stl|stl|points=8  normals=6  faces=12  min=\\(0, 0, 0\\)  max=\\(10, 10, 10\\)"
      "stl/cube-binary.stl|cube.obj||o cube-binary.stl\nv "
      "stl/cube-binary.stl|cube.ply||element vertex 8\nproperty double x\nproperty double y\nproperty double z\nelement face 12"
      "objects/scene-1.15.obj|scene.stl|stl|faces=6  min=\\(0, 0, 0\\)  max=\\(20, 20, 15\\)"
      "profiles/turned-pin.swp|pin.swp|profile|sweep  .*count=9"
      "foreign/sirius.txt|sirius.ext|profile|extrusion  .*count=6"
      "foreign/vericut-sor.xml|sor.svg||<svg"
      "dxf/shaft.dxf|shaft.swp|profile|sweep  .*count=8")
  foreach(row IN LISTS rows)
    string(REPLACE "|" ";" row "${row}")
    list(GET row 0 input)
    list(GET row 1 output)
    list(GET row 2 reader)
    list(GET row 3 wanted)
    zormodel(convert ${EXAMPLES}/${input} ${WORK}/${output})
    check("convert ${input} ${output}" rc EQUAL 0)
    if(reader STREQUAL "")
      file(READ ${WORK}/${output} out)
    else()
      zormodel(${reader} ${WORK}/${output})
    endif()
    check("${output} read back" out MATCHES "${wanted}")
  endforeach()
  file(STRINGS ${WORK}/cube.obj v REGEX "^v ")
  file(STRINGS ${WORK}/cube.obj f REGEX "^f [0-9]+ [0-9]+ [0-9]+$")
  list(LENGTH v vCount)
  list(LENGTH f fCount)
  check("cube.obj: 8 vertices, 12 triangles" vCount EQUAL 8 AND fCount EQUAL 12)
  zormodel(convert ${EXAMPLES}/profiles/turned-pin.swp ${WORK}/pin.ext)
  check("a sweep is not written as an extrusion" rc EQUAL 2 AND err MATCHES "converts to .svg or .swp, not .ext")
else()
  message(FATAL_ERROR "unknown MODE ${MODE}")
endif()
