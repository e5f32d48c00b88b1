#include "platform/duilib_string.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cwchar>

namespace luadui {

namespace {

constexpr size_t kLongestFormat = 1 << 20;  // wide characters; what is longer is a mistake

LPCWSTR OrEmpty(LPCWSTR text) { return text ? text : L""; }

wchar_t Upper(wchar_t c) { return c >= L'a' && c <= L'z' ? static_cast<wchar_t>(c - L'a' + L'A') : c; }
wchar_t Lower(wchar_t c) { return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a') : c; }

int ToIndex(size_t at) { return at == std::wstring::npos ? -1 : static_cast<int>(at); }

// The C library's own rules for wide formats differ between systems in what %s and %c mean; the widths here say it
// in a way that all understand. I64 becomes ll.
std::wstring PortableFormat(std::wstring_view format) {
    std::wstring portable;
    bool inDirective = false, hasWidth = false;
    for (size_t i = 0; i < format.size(); ++i) {
        const wchar_t c = format[i];
        if (!inDirective) {
            inDirective = c == L'%';
            hasWidth = false;
        } else if (format.substr(i, 3) == L"I64") {
            portable += L"ll";
            i += 2;
            continue;
        } else if (c == L'h' || c == L'l' || c == L'w') {
            hasWidth = true;
            if (c == L'w') {
                portable += L'l';
                continue;
            }
        } else if (c == L'%' || (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z')) {
            inDirective = false;
            if (c == L'S' || c == L'C') {
                portable += {L'h', Lower(c)};
                continue;
            }
            if (!hasWidth && (c == L's' || c == L'c')) portable += L'l';
        }
        portable += c;
    }
    return portable;
}

int Print(std::wstring& out, LPCWSTR format, va_list arguments) {
    const std::wstring portable = PortableFormat(OrEmpty(format));
    for (size_t size = 256; size <= kLongestFormat; size *= 4) {
        out.resize(size);
        va_list copy;
        va_copy(copy, arguments);
        const int length = std::vswprintf(out.data(), size, portable.c_str(), copy);
        va_end(copy);
        if (length < 0 || static_cast<size_t>(length) >= size) continue;
        out.resize(static_cast<size_t>(length));
        return length;
    }
    out.clear();
    return 0;
}

}  // namespace

CDuiString::CDuiString(LPCWSTR text, int length) { Assign(text, length); }

void CDuiString::SetAt(int at, wchar_t c) {
    if (_has(at)) m_text[static_cast<size_t>(at)] = c;
}

void CDuiString::Assign(LPCWSTR text, int length) {
    const LPCWSTR from = OrEmpty(text);
    const bool isCounted = text && length >= 0;
    std::wstring assigned(from, isCounted ? wcsnlen(from, static_cast<size_t>(length)) : std::wcslen(from));
    m_text.swap(assigned);
}

void CDuiString::Append(LPCWSTR text) { m_text += std::wstring(OrEmpty(text)); }

CDuiString& CDuiString::operator=(LPCWSTR text) {
    Assign(text);
    return *this;
}

CDuiString& CDuiString::operator=(wchar_t c) {
    m_text.assign(1, c);
    return *this;
}

CDuiString& CDuiString::operator+=(const CDuiString& text) {
    m_text += text.m_text;
    return *this;
}

CDuiString& CDuiString::operator+=(LPCWSTR text) {
    Append(text);
    return *this;
}

CDuiString& CDuiString::operator+=(wchar_t c) {
    m_text += c;
    return *this;
}

CDuiString CDuiString::operator+(const CDuiString& text) const { return CDuiString(*this) += text; }
CDuiString CDuiString::operator+(LPCWSTR text) const { return CDuiString(*this) += text; }

int CDuiString::Compare(LPCWSTR text) const { return m_text.compare(OrEmpty(text)); }

int CDuiString::CompareNoCase(LPCWSTR text) const {
    CDuiString left(*this), right(text);
    left.MakeLower();
    right.MakeLower();
    return left.Compare(right);
}

void CDuiString::MakeUpper() { std::transform(m_text.begin(), m_text.end(), m_text.begin(), Upper); }
void CDuiString::MakeLower() { std::transform(m_text.begin(), m_text.end(), m_text.begin(), Lower); }

size_t CDuiString::_clamp(int count) const { return static_cast<size_t>(std::clamp(count, 0, GetLength())); }

CDuiString CDuiString::Left(int count) const { return Mid(0, static_cast<int>(_clamp(count))); }
CDuiString CDuiString::Right(int count) const { return Mid(GetLength() - static_cast<int>(_clamp(count))); }

CDuiString CDuiString::Mid(int from, int count) const {
    CDuiString part;
    if (from < 0 || from >= GetLength()) return part;
    part.m_text =
        m_text.substr(static_cast<size_t>(from), count < 0 ? std::wstring::npos : static_cast<size_t>(count));
    return part;
}

int CDuiString::Find(wchar_t c, int from) const {
    return _has(from) ? ToIndex(m_text.find(c, static_cast<size_t>(from))) : -1;
}

int CDuiString::Find(LPCWSTR text, int from) const {
    return _has(from) ? ToIndex(m_text.find(OrEmpty(text), static_cast<size_t>(from))) : -1;
}

int CDuiString::ReverseFind(wchar_t c) const { return ToIndex(m_text.rfind(c)); }

int CDuiString::Replace(LPCWSTR from, LPCWSTR to) {
    const std::wstring searched = OrEmpty(from), put = OrEmpty(to);
    if (searched.empty()) return 0;
    std::wstring result;
    int count = 0;
    size_t rest = 0;
    for (size_t at; (at = m_text.find(searched, rest)) != std::wstring::npos;
         rest = at + searched.size(), ++count) {
        result.append(m_text, rest, at - rest).append(put);
    }
    result.append(m_text, rest);
    m_text.swap(result);
    return count;
}

int CDuiString::Format(LPCWSTR format, ...) {
    std::wstring printed;  // an argument may be this very string
    va_list arguments;
    va_start(arguments, format);
    Print(printed, format, arguments);
    va_end(arguments);
    m_text.swap(printed);
    return GetLength();
}

int CDuiString::SmallFormat(LPCWSTR format, ...) {
    std::wstring printed;
    va_list arguments;
    va_start(arguments, format);
    Print(printed, format, arguments);
    va_end(arguments);
    m_text.swap(printed);
    return GetLength();
}

}  // namespace luadui
