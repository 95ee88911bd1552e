#include "basics/Text.h"

#include "basics/RuntimeError.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <limits>

namespace text {

VbList<std::string> splitAt(std::string_view s) {
    VbList<std::string> parts;
    std::string* last = &parts.append();
    for (char c : s) {
        if (c == '@')
            last = &parts.append();
        else
            last->push_back(c);
    }
    return parts;
}

static bool isBlank(char c) {
    return c == ' ' || c == '\t';
}
static bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

double leadingNumber(std::string_view s) {
    size_t i = 0;
    while (i < s.size() && isBlank(s[i]))
        ++i;
    bool negative = false;
    if (i < s.size() && (s[i] == '+' || s[i] == '-')) negative = s[i++] == '-';
    double value = 0;
    bool any = false;
    while (i < s.size() && isDigit(s[i])) {
        value = value * 10 + (s[i++] - '0');
        any = true;
    }
    if (i < s.size() && s[i] == '.') {
        ++i;
        double scale = 0.1;
        while (i < s.size() && isDigit(s[i])) {
            value += (s[i++] - '0') * scale;
            scale /= 10;
            any = true;
        }
    }
    if (!any) return 0;
    return negative ? -value : value;
}

static double roundHalfEven(double v) {
    if (!std::isfinite(v)) return v;
    double r = std::nearbyint(v); // the default rounding mode is to nearest, ties to even
    return r;
}

template <typename T> static Checked<T> rounded(double value) {
    double r = roundHalfEven(value);
    if (!(r >= std::numeric_limits<T>::min() && r <= std::numeric_limits<T>::max()))
        return {0, errors::overflow};
    return {static_cast<T>(r)};
}

Checked<int16_t> int16Of(double value) {
    return rounded<int16_t>(value);
}

Checked<int32_t> int32Of(double value) {
    return rounded<int32_t>(value);
}

Checked<int32_t> strictInt32Of(std::string_view s) {
    size_t b = 0, e = s.size();
    while (b < e && isBlank(s[b]))
        ++b;
    while (e > b && isBlank(s[e - 1]))
        --e;
    std::string_view t = s.substr(b, e - b);
    size_t i = 0;
    if (i < t.size() && (t[i] == '+' || t[i] == '-')) ++i;
    bool digits = false, point = false;
    for (; i < t.size(); ++i) {
        if (isDigit(t[i]))
            digits = true;
        else if (t[i] == '.' && !point)
            point = true;
        else
            return {0, errors::typeMismatch};
    }
    if (!digits) return {0, errors::typeMismatch};
    return int32Of(leadingNumber(t));
}

QString display(std::string_view s) {
    return QString::fromLatin1(s.data(), static_cast<qsizetype>(s.size()));
}

QString printable(std::string_view s, size_t maxChars) {
    const bool cut = s.size() > maxChars;
    if (cut) s = s.substr(0, maxChars);
    QString shown;
    shown.reserve(static_cast<qsizetype>(s.size()));
    for (unsigned char c : s) {
        // C0 and C1 controls and DEL: a C1 byte read as Latin-1 is a terminal's control too.
        if (c < 0x20 || c == 0x7f || (c >= 0x80 && c < 0xa0))
            shown += QString("\\x%1").arg(c, 2, 16, QChar('0'));
        else
            shown += QChar(c);
    }
    if (cut) shown += "...";
    return shown;
}

bool LineCursor::next(std::string_view& line) {
    if (rest_.empty()) return false;
    const size_t end = rest_.find_first_of("\r\n");
    if (end == std::string_view::npos) {
        line = rest_;
        rest_ = {};
        return true;
    }
    line = rest_.substr(0, end);
    rest_.remove_prefix(end +
                        ((rest_[end] == '\r' && end + 1 < rest_.size() && rest_[end + 1] == '\n') ? 2 : 1));
    return true;
}

std::vector<std::string> splitLines(std::string_view bytes) {
    std::vector<std::string> lines;
    LineCursor cursor(bytes);
    for (std::string_view line; cursor.next(line);)
        lines.emplace_back(line);
    return lines;
}

std::string upper(std::string s) {
    std::transform(s.begin(), s.end(), s.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return s;
}

} // namespace text
