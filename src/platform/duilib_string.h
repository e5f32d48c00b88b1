// CDuiString: a wide string with the toolkit's operations. Included by platform/duilib.h.
#pragma once

#include <compare>
#include <string>

#include "platform/export.h"
#include "platform/win32.h"

namespace luadui {

// Positions and lengths are counted in wide characters. A null argument is the empty string; a position
// outside the string finds and takes nothing. Comparisons are by code; those without case change ASCII
// letters only. Threads: as for std::wstring.
class TESSEL_API CDuiString {
  public:
    CDuiString() = default;
    CDuiString(wchar_t c) : m_text(1, c) {}
    CDuiString(LPCWSTR text, int length = -1);  // -1: up to the terminating zero

    void Empty() { m_text.clear(); }
    int GetLength() const { return static_cast<int>(m_text.size()); }
    bool IsEmpty() const { return m_text.empty(); }
    wchar_t GetAt(int at) const { return _has(at) ? m_text[static_cast<size_t>(at)] : L'\0'; }
    void SetAt(int at, wchar_t c);
    LPCWSTR GetData() const { return m_text.c_str(); }  // valid until the string is changed
    operator LPCWSTR() const { return m_text.c_str(); }
    wchar_t operator[](int at) const { return GetAt(at); }

    void Assign(LPCWSTR text, int length = -1);
    void Append(LPCWSTR text);
    CDuiString& operator=(LPCWSTR text);
    CDuiString& operator=(wchar_t c);
    CDuiString& operator+=(const CDuiString& text);
    CDuiString& operator+=(LPCWSTR text);
    CDuiString& operator+=(wchar_t c);
    CDuiString operator+(const CDuiString& text) const;
    CDuiString operator+(LPCWSTR text) const;

    // Less than 0, 0, more than 0.
    int Compare(LPCWSTR text) const;
    int CompareNoCase(LPCWSTR text) const;
    bool operator==(const CDuiString& text) const { return m_text == text.m_text; }
    auto operator<=>(const CDuiString& text) const { return m_text <=> text.m_text; }
    bool operator==(LPCWSTR text) const { return Compare(text) == 0; }
    auto operator<=>(LPCWSTR text) const { return Compare(text) <=> 0; }

    void MakeUpper();
    void MakeLower();
    CDuiString Left(int count) const;
    CDuiString Mid(int from, int count = -1) const;  // -1: to the end
    CDuiString Right(int count) const;

    int Find(wchar_t c, int from = 0) const;  // -1: not found
    int Find(LPCWSTR text, int from = 0) const;
    int ReverseFind(wchar_t c) const;
    int Replace(LPCWSTR from, LPCWSTR to);  // how many were replaced

    // As wsprintf writes it: %s and %c are wide on every system (%hs and %S narrow and ASCII). Returns the length; a
    // format that cannot be written leaves the string empty.
    int Format(LPCWSTR format, ...);
    int SmallFormat(LPCWSTR format, ...);

  private:
    bool _has(int at) const { return at >= 0 && at < GetLength(); }
    size_t _clamp(int count) const;

    std::wstring m_text;
};

inline CDuiString operator+(LPCWSTR left, const CDuiString& right) { return CDuiString(left) + right; }

}  // namespace luadui
