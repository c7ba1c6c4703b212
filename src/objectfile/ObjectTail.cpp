// The common tail of every object record (placement, attachment, name table)
// and the file-reference record with its path resolution.
#include <cstdio>
#include <cstring>

#include "objectfile/MWZORFile.h"
#include "objectfile/ObjectFileState.h"
#include "objectfile/ReadGuard.h"
#include "platform/crtpath.h"

bool CMWZORFile::ReadObjectTail(double vector[4], double matrix[4][4], float quad[4], const CString* name,
                                CString* tailText, CString* attachName, CString* attachKey,
                                unsigned int* attachIndex, int* recordUnits, int* flag) {
    zor::ObjectFileState& state = zor::object_file_state();
    CString scratch;
    *recordUnits = 0;
    *flag = 0;

    if (vector != nullptr) vector[0] = vector[1] = vector[2] = vector[3] = 0.0;
    if (!SkipLines(1) || !ReadField(tailText != nullptr ? tailText : &scratch)) return false;
    if (!ReadIntField(1, recordUnits)) return false;
    if (m_version >= 113 && !ReadIntField(0, nullptr)) return false;
    if (m_version > 106) {
        int extra = 0;
        if (!ReadIntField(1, &extra)) return false;
        if (extra != 0) {
            if (!SkipLines(2)) return false;
            if (m_version > 109 && !ReadIntField(1, flag)) return false;
        }
    }
    if (!ReadFloatField(4, quad) || !SkipLines(1)) return false;
    for (int row = 0; row < 4; ++row)
        if (!ReadDoubleField(4, matrix != nullptr ? matrix[row] : nullptr)) return false;

    if (state.matrixConvention == 0 && matrix != nullptr) {
        // Transpose the upper 3x3 and keep the translation column as read; the
        // bottom row read from the file is dropped. Intended.
        for (int r = 0; r < 4; ++r)
            for (int c = r + 1; c < 4; ++c) {
                double t = matrix[r][c];
                matrix[r][c] = matrix[c][r];
                matrix[c][r] = t;
            }
        for (int r = 0; r < 3; ++r) {
            matrix[r][3] = matrix[3][r];
            matrix[3][r] = 0.0;
        }
    }

    float placement[4] = {0.0f, 0.0f, 0.0f, 0.0f};
    if (!ReadFloatField(4, placement)) return false;
    if (vector != nullptr)
        for (int i = 0; i < 4; ++i) vector[i] = placement[i];

    if (!SkipLines(4)) return false;
    for (int block = 0; block < 3; ++block)
        if (!ReadFloatField(0, nullptr) || !SkipLines(3)) return false;
    for (int i = 0; i < 4; ++i)
        if (!ReadIntField(0, nullptr)) return false;
    if (!SkipLines(2)) return false;

    CString attachment;
    if (!ReadField(&attachment)) return false;
    // "None" means no attachment; an empty one means the object itself. A
    // "None" is not replaced by the name: intended.
    if (attachment == "None")
        attachment.Empty();
    else if (attachment.IsEmpty() && name != nullptr)
        attachment = *name;
    if (attachName != nullptr) *attachName = attachment;

    CString key("1");
    if (m_version >= 103 && !ReadField(&key)) return false;
    if (attachKey != nullptr) *attachKey = key;

    int index = 0;
    if (m_version >= 106 && !ReadIntField(1, &index)) return false;
    if (m_version < 109 && state.spindleCount > 0) {
        const std::string nameKey = zor::spindle_key(attachment);
        const std::string spindleKey = zor::spindle_key(key);
        const int stored = state.spindleCount < zor::ObjectFileState::kSpindleSlots
                               ? state.spindleCount
                               : zor::ObjectFileState::kSpindleSlots;
        for (int i = 0; i < stored; ++i) {
            const auto& entry = state.spindles[static_cast<size_t>(i)];
            if (!entry.nameKey.empty() && !entry.spindleKey.empty() && entry.nameKey == nameKey &&
                entry.spindleKey == spindleKey) {
                index = i + 1;
                break;
            }
        }
    }
    if (attachIndex != nullptr) *attachIndex = static_cast<unsigned int>(index);

    int further = 0;
    if (!ReadIntField(1, &further) || !SkipLines(further)) return false;
    int hasBlock = 0;
    if (!ReadIntField(1, &hasBlock)) return false;
    if (hasBlock != 0) {
        if (!SkipLines(1)) return false;
        ++m_depth;
        if (!SkipToRecordDepth()) return false;
    }
    if (m_version < 115) {
        if (!SkipLines(1)) return false;
        ++m_depth;
        if (!SkipToRecordDepth()) return false;
    }

    // The record's "}" closes it here; any other line is left for ReadType.
    const long position = m_stream != nullptr ? std::ftell(m_stream) : -1;
    CString line;
    if (!ReadLine(line)) return false;
    if (line.Find('}') >= 0) {
        if (m_depth > 0) --m_depth;
        if (m_recordDepth > 0) --m_recordDepth;
    } else if (position < 0 || std::fseek(m_stream, position, SEEK_SET) != 0) {
        return false;
    }

    if (m_version > 112 && static_cast<int>(state.objectNames.size()) < zor::ObjectFileState::kMaxObjectNames)
        state.objectNames.emplace_back(name != nullptr ? name->GetString() : "");
    return true;
}

void CMWZORFile::ResolveObjectPath(CString& name) const {
    if (name.IsEmpty()) return;
    char drive[_MAX_DRIVE], dir[_MAX_DIR];
    _splitpath(zor::object_file_state().currentPath.c_str(), drive, dir, nullptr, nullptr);
    CString folder = CString(drive) + dir;
    // A file named without a folder lives in the working directory already.
    if (!folder.IsEmpty() && _chdir(folder) != 0) {
        name.Empty();
        return;
    }
    char absolute[_MAX_PATH];
    if (_fullpath(absolute, name, _MAX_PATH) != nullptr)
        name = absolute;
    else
        name.Empty();
}

bool CMWZORFile::ReadObjectFile(unsigned int* first, CString* fileName, CString* text2, double vector[4],
                                CString* /*text3*/, CString* /*text4*/, CString* /*text5*/, double matrix[4][4],
                                CMWZORPointArray* /*list1*/, CMWZORPointArray* /*list2*/, float quad[4],
                                CString* name, CString* tailText, CString* attachName, CString* attachKey,
                                unsigned int* attachIndex, unsigned int* flag) {
    return zor::contain_allocation_failure(m_stream, false, [&] {
        CString reference, scratch, nameValue;
        if (!ReadIntField(1, reinterpret_cast<int*>(first)) || !ReadField(&reference) ||
            !ReadField(text2 != nullptr ? text2 : &scratch))
            return false;
        if (m_version > 109 && !ReadIntField(1, reinterpret_cast<int*>(flag))) return false;
        CString* nameOut = name != nullptr ? name : &nameValue;
        if (!ReadField(nameOut)) return false;

        ResolveObjectPath(reference);
        if (fileName != nullptr) *fileName = reference;

        int recordUnits = 0, tailFlag = 0;
        if (!ReadObjectTail(vector, matrix, quad, nameOut, tailText, attachName, attachKey, attachIndex, &recordUnits,
                            &tailFlag))
            return false;
        if (flag != nullptr) *flag = static_cast<unsigned int>(tailFlag);
        // Only the matrix: the 4-vector of a file reference keeps its file units.
        // Intended.
        ScaleRecord(recordUnits, nullptr, matrix, nullptr, 0);
        return true;
    });
}

void MakeFullPathName(char* folder, char* name, CString& result) {
    if (name == nullptr) return;
    if (folder != nullptr && folder[0] != '\0' && name[0] != '.' && name[0] != '\\' && name[0] != '/') {
        const char last = folder[std::strlen(folder) - 1];
        if (last == '\\' || last == '/')
            result.Format("%s%s", folder, name);
        else
            result.Format("%s\\%s", folder, name);
        return;
    }
    result = name;
}
