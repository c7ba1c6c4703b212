// DXF drawings to profile files: the LINE and ARC entities of each layer are
// chained and written as one native extrusion or sweep profile file.
#pragma once

#include "module/ZORModelIoExport.h"
#include "platform/afx.h"

// Reads the ENTITIES section of the drawing at dxfPath and writes, for each
// layer in order of first appearance, the chain through the layer's first
// entity as a "KOLP EXTRUDE FILE" (Z 0 to 1) or, with sweep, a "KOLP SWEEP
// FILE", in unit (1 mm, 2 in; coordinates are not converted). One layer is
// written to outPath itself; several go to outPath with "_Layer_Name_" and
// the layer's name put before its last four characters ("/" and "\" in the
// name made "_", so no file leaves outPath's folder). Returns the paths
// written followed by an empty string; when no entity names a layer, nothing
// is written and the result is one string, the last layer name read ("none").
// Null when the drawing cannot be opened or has no "ENTITIES" token, or when
// memory runs out.
// Release the result with Delete_Names. reserved is not used.
ZORMODELIO_API CString* ReadDxf(CString dxfPath, CString outPath, unsigned int unit, unsigned int reserved, bool sweep);

// Releases a result of ReadDxf; null is ignored, the count is not used.
ZORMODELIO_API void Delete_Names(CString* names, int count);
