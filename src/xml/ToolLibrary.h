// Tool-library XML documents: one document is held between calls and walked
// token by token. Call order: API_IsXml on a file; when the answer is 1,
// API_ReadList until it returns an empty string; API_ReleaseXml to restart or
// end a walk; API_ResetXmlDoc when done with the file. A failing step throws
// _com_error (E_POINTER when the walk needs a node the document lacks).
#pragma once

#include "module/ZORModelIoExport.h"
#include "platform/comsupport.h"

// Loads fileName (8-bit path) as the held document, replacing any other.
// *answer: 1 when it parsed; 0 when it did not (or memory ran out), with the
// parser's reason on standard error and no document held. answer may be null.
ZORMODELIO_API void API_IsXml(char* fileName, int* answer);

// Forgets the held document (API_ReadList then returns empty strings).
ZORMODELIO_API void API_ResetXmlDoc();

// Restarts the walk at the root element's first child on the next
// API_ReadList; fullReset also forgets the walk's position.
ZORMODELIO_API void API_ReleaseXml(bool fullReset);

// The next token of the walk: an element name, an attribute name then its
// value, a text value, any of these with "!" when the walk leaves the
// enclosing element(s), "OptiPath" at the end of the list, or "" when no
// document is held, after the end, or when memory runs out (the walk then
// stays where it was). Points into a buffer of the module that
// the next call overwrites; do not free it.
ZORMODELIO_API char* API_ReadList();
