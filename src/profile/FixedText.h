// The native profile files' numbers: "%lf" (six decimals) without the cost of
// printf's format interpreter, byte for byte what printf writes.
#pragma once

#include <string>

namespace zor {

// Whether append_fixed6 may take its own way: round-to-nearest and "." as the
// decimal point, as printf would use now. Asked once per file written.
bool fixed6_direct();

// The longest text put_fixed6 writes: sign, 16 digits, point, 6 decimals.
constexpr int kFixed6Max = 24;

// Writes value at at as printf("%lf") writes it, when fixed6_direct() and
// |value| < 2^53, and returns the end of what it wrote; else writes nothing
// and returns null (append_fixed6 takes every value).
char* put_fixed6(char* at, double value);

// Appends value as printf("%lf") writes it. direct: fixed6_direct() (else
// every value goes through snprintf).
void append_fixed6(std::string& out, double value, bool direct);

}  // namespace zor
