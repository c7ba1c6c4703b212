// The one export macro. The library is built with hidden visibility; only
// declarations marked ZORMODELIO_API are exported from the shared library.
// ZOR_INTERNAL keeps a member of an exported class out of the export table.
#pragma once

#if defined(__GNUC__)
#define ZORMODELIO_API __attribute__((visibility("default")))
#define ZOR_INTERNAL __attribute__((visibility("hidden")))
#else
#define ZORMODELIO_API
#define ZOR_INTERNAL
#endif
