// ZORModelIo: loads the geometric models of the machining simulation. This is
// the one header a host includes; it declares the whole exported interface.
//
// All calls run on the caller's thread and keep module-wide state: one file
// of a kind is read at a time in the process.
#pragma once

#include "module/ZORModelIoExport.h"
#include "platform/afx.h"
#include "platform/afxcoll.h"
#include "platform/afxtempl.h"

// Object files: CMWZORFile, CMWZORPoint, MakeFullPathName.
#include "objectfile/MWZORFile.h"
// Profiles: segments and segment lists, native and foreign profile files,
// segment contours.
#include "profile/MWZORSegment.h"
#include "profile/MWZORProfile.h"
#include "profile/SegmentContours.h"
// Meshes: STL and the Vericut flat-array readers.
#include "mesh/MeshImport.h"
#include "mesh/VericutImport.h"
// DXF drawings to profile files.
#include "dxf/DxfReader.h"
// Tool-library XML documents.
#include "xml/ToolLibrary.h"
