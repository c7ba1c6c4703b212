// CString: the framework's 8-bit dynamic string, for the subset of members the
// module and its hosts use. White space means the C locale's " \t\n\v\f\r";
// bytes above 127 are never white space and never change case.
#pragma once

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

#include "platform/afxexcept.h"

class CString {
public:
    CString() = default;
    CString(const char* text) : m_str(text != nullptr ? text : "") {}  // NOLINT: implicit as in the framework
    CString(const char* text, int length) : m_str(text != nullptr ? text : "", length > 0 ? length : 0) {}
    CString(char ch, int repeat = 1) : m_str(repeat > 0 ? repeat : 0, ch) {}
    CString(std::string_view text) : m_str(text) {}  // NOLINT
    CString(const CString&) = default;
    CString(CString&&) noexcept = default;
    CString& operator=(const CString&) = default;
    CString& operator=(CString&&) noexcept = default;
    CString& operator=(const char* text) {
        m_str = text != nullptr ? text : "";
        return *this;
    }
    CString& operator=(char ch) {
        m_str.assign(1, ch);
        return *this;
    }

    int GetLength() const { return static_cast<int>(m_str.size()); }
    bool IsEmpty() const { return m_str.empty(); }
    void Empty() { m_str.clear(); }

    operator const char*() const { return m_str.c_str(); }  // NOLINT: LPCTSTR conversion
    const char* GetString() const { return m_str.c_str(); }
    std::string_view view() const { return m_str; }

    char GetAt(int index) const {
        if (index < 0 || index >= GetLength()) AfxThrowInvalidArgException();
        return m_str[static_cast<size_t>(index)];
    }
    char operator[](int index) const { return GetAt(index); }
    void SetAt(int index, char ch) {
        if (index < 0 || index >= GetLength()) AfxThrowInvalidArgException();
        m_str[static_cast<size_t>(index)] = ch;
    }

    CString& operator+=(const CString& s) {
        m_str += s.m_str;
        return *this;
    }
    CString& operator+=(const char* s) {
        if (s != nullptr) m_str += s;
        return *this;
    }
    CString& operator+=(char ch) {
        m_str += ch;
        return *this;
    }
    friend CString operator+(const CString& a, const CString& b) { return CString(a.m_str + b.m_str); }
    friend CString operator+(const CString& a, const char* b) { return CString(a.m_str + (b ? b : "")); }
    friend CString operator+(const char* a, const CString& b) { return CString((a ? a : "") + b.m_str); }
    friend CString operator+(const CString& a, char b) { return CString(a.m_str + b); }

    // Like strcmp: negative, 0 or positive.
    int Compare(const char* s) const { return std::strcmp(m_str.c_str(), s != nullptr ? s : ""); }
    int CompareNoCase(const char* s) const {
        const unsigned char* a = reinterpret_cast<const unsigned char*>(m_str.c_str());
        const unsigned char* b = reinterpret_cast<const unsigned char*>(s != nullptr ? s : "");
        for (;; ++a, ++b) {
            int ca = ToLower(*a), cb = ToLower(*b);
            if (ca != cb || ca == 0) return ca - cb;
        }
    }
    friend bool operator==(const CString& a, const CString& b) { return a.m_str == b.m_str; }
    friend bool operator==(const CString& a, const char* b) { return a.Compare(b) == 0; }
    friend bool operator==(const char* a, const CString& b) { return b.Compare(a) == 0; }
    friend bool operator!=(const CString& a, const CString& b) { return !(a == b); }
    friend bool operator!=(const CString& a, const char* b) { return !(a == b); }
    friend bool operator!=(const char* a, const CString& b) { return !(b == a); }
    friend bool operator<(const CString& a, const CString& b) { return a.m_str < b.m_str; }

    CString& TrimLeft() { return TrimLeft(kWhiteSpace); }
    CString& TrimRight() { return TrimRight(kWhiteSpace); }
    CString& Trim() { return TrimRight().TrimLeft(); }
    CString& TrimLeft(char ch) { return TrimLeft(std::string_view(&ch, 1)); }
    CString& TrimRight(char ch) { return TrimRight(std::string_view(&ch, 1)); }
    CString& Trim(char ch) { return TrimRight(ch).TrimLeft(ch); }
    // Removes leading (trailing) characters that are in the set.
    CString& TrimLeft(const char* set) { return TrimLeft(std::string_view(set != nullptr ? set : "")); }
    CString& TrimRight(const char* set) { return TrimRight(std::string_view(set != nullptr ? set : "")); }
    CString& Trim(const char* set) { return TrimRight(set).TrimLeft(set); }

    CString& MakeUpper() {
        for (char& c : m_str)
            if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
        return *this;
    }
    CString& MakeLower() {
        for (char& c : m_str)
            if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
        return *this;
    }

    // Index of the first occurrence at or after start, or -1.
    int Find(char ch, int start = 0) const {
        if (start < 0 || start >= GetLength()) return -1;
        size_t pos = m_str.find(ch, static_cast<size_t>(start));
        return pos == std::string::npos ? -1 : static_cast<int>(pos);
    }
    int Find(const char* sub, int start = 0) const {
        if (sub == nullptr || start < 0 || start > GetLength()) return -1;
        size_t pos = m_str.find(sub, static_cast<size_t>(start));
        return pos == std::string::npos ? -1 : static_cast<int>(pos);
    }
    // Index of the last occurrence, or -1.
    int ReverseFind(char ch) const {
        size_t pos = m_str.rfind(ch);
        return pos == std::string::npos ? -1 : static_cast<int>(pos);
    }

    CString Left(int count) const {
        if (count < 0) count = 0;
        return CString(std::string_view(m_str).substr(0, static_cast<size_t>(count)));
    }
    CString Right(int count) const {
        if (count < 0) count = 0;
        if (count >= GetLength()) return *this;
        return CString(std::string_view(m_str).substr(m_str.size() - static_cast<size_t>(count)));
    }
    CString Mid(int first) const { return Mid(first, GetLength()); }
    CString Mid(int first, int count) const {
        if (first < 0) first = 0;
        if (count < 0) count = 0;
        if (first >= GetLength()) return CString();
        return CString(std::string_view(m_str).substr(static_cast<size_t>(first), static_cast<size_t>(count)));
    }

    // Inserts text before index (clamped to the string); returns the new length.
    int Insert(int index, const char* text) {
        if (index < 0) index = 0;
        if (index > GetLength()) index = GetLength();
        m_str.insert(static_cast<size_t>(index), text != nullptr ? text : "");
        return GetLength();
    }
    // Replaces every occurrence of oldText; returns the number replaced.
    int Replace(const char* oldText, const char* newText) {
        if (oldText == nullptr || *oldText == '\0') return 0;
        std::string_view from(oldText), to(newText != nullptr ? newText : "");
        int n = 0;
        for (size_t pos = m_str.find(from); pos != std::string::npos; pos = m_str.find(from, pos + to.size())) {
            m_str.replace(pos, from.size(), to);
            ++n;
        }
        return n;
    }
    int Replace(char from, char to) {
        int n = 0;
        for (char& c : m_str)
            if (c == from) {
                c = to;
                ++n;
            }
        return n;
    }
    // Removes every occurrence of ch; returns the number removed.
    int Remove(char ch) {
        size_t before = m_str.size();
        m_str.erase(std::remove(m_str.begin(), m_str.end(), ch), m_str.end());
        return static_cast<int>(before - m_str.size());
    }

    void Format(const char* format, ...)
#if defined(__GNUC__)
        __attribute__((format(printf, 2, 3)))
#endif
    {
        va_list args;
        va_start(args, format);
        FormatV(format, args);
        va_end(args);
    }
    void FormatV(const char* format, va_list args) {
        va_list copy;
        va_copy(copy, args);
        int n = std::vsnprintf(nullptr, 0, format, copy);
        va_end(copy);
        if (n < 0) {
            m_str.clear();
            return;
        }
        std::string out(static_cast<size_t>(n) + 1, '\0');
        std::vsnprintf(out.data(), out.size(), format, args);
        out.resize(static_cast<size_t>(n));
        m_str = std::move(out);
    }

    // Direct buffer access, as in the framework: GetBuffer(n) gives room for n
    // characters plus a terminator; ReleaseBuffer(-1) takes the length from it.
    char* GetBuffer(int minLength = 0) {
        if (minLength > GetLength()) m_str.resize(static_cast<size_t>(minLength));
        return m_str.data();
    }
    void ReleaseBuffer(int newLength = -1) {
        if (newLength < 0) newLength = static_cast<int>(std::strlen(m_str.c_str()));
        m_str.resize(static_cast<size_t>(newLength));
    }

private:
    static constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";
    static int ToLower(int c) { return (c >= 'A' && c <= 'Z') ? c - 'A' + 'a' : c; }

    CString& TrimLeft(std::string_view set) {
        size_t pos = m_str.find_first_not_of(set);
        m_str.erase(0, pos == std::string::npos ? m_str.size() : pos);
        return *this;
    }
    CString& TrimRight(std::string_view set) {
        size_t pos = m_str.find_last_not_of(set);
        m_str.erase(pos == std::string::npos ? 0 : pos + 1);
        return *this;
    }

    std::string m_str;
};
