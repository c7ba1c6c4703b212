// The native profile files' numbers: "%lf" (six decimals) without the cost of
// printf's format interpreter, byte for byte what printf writes.
#pragma once

#include <string>

namespace zor {

// Whether append_fixed6 may take its own way: round-to-nearest and "." as the
// decimal point, as printf would use now. Asked once per file written.
bool fixed6_direct();

// Appends value as printf("%lf") writes it. direct: fixed6_direct() (else
// every value goes through snprintf).
void append_fixed6(std::string& out, double value, bool direct);

}  // namespace zor
