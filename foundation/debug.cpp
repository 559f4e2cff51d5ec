#include "foundation/debug.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/platform.h"

namespace {

// A trace line, cut at the buffer's end.
class TraceLine {
public:
    TraceLine() : mLength(0), mCut(false) { mText[0] = '\0'; }

    void append(char const* text, size_t length)
    {
        size_t const room = sizeof(mText) - 1 - mLength;
        if (length > room) {
            length = room;
            mCut = true;
        }
        memcpy(mText + mLength, text, length);
        mLength += length;
        mText[mLength] = '\0';
    }

    // Text of the format itself: "%%" is one "%", and the text is read as a
    // format once more, where again "%%" is one "%". A lone "%" that the
    // second reading would expand has no argument left, and stands as it is.
    void appendLiteral(char const* text, size_t length)
    {
        char once[kSize];
        size_t onceLength = 0;
        for (size_t i = 0; i < length && onceLength < sizeof(once); ++i) {
            once[onceLength++] = text[i];
            if (text[i] == '%' && i + 1 < length && text[i + 1] == '%') {
                ++i;
            }
        }
        for (size_t i = 0; i < onceLength; ++i) {
            append(&once[i], 1);
            if (once[i] == '%' && i + 1 < onceLength && once[i + 1] == '%') {
                ++i;
            }
        }
    }

    void markCut(bool cut) { mCut = mCut || cut; }

    // A cut line still ends its line.
    void finish()
    {
        if (mCut && mLength > 0) {
            mText[mLength - 1] = '\n';
        }
    }

    char const* getText() const { return mText; }

    static constexpr size_t kSize = 1024;

private:
    char mText[kSize];
    size_t mLength;
    bool mCut;
};

// One conversion with its value, and with the widths given as "*" before it.
template <typename T>
int formatPiece(char* piece, size_t size, char const* directive, int stars, int const* star, T value)
{
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    switch (stars) {
    case 2:
        return snprintf(piece, size, directive, star[0], star[1], value);
    case 1:
        return snprintf(piece, size, directive, star[0], value);
    default:
        return snprintf(piece, size, directive, value);
    }
#pragma GCC diagnostic pop
}

// Formats the one conversion of the format that starts at "at"; answers the
// character past it. A "%n" consumes its argument and writes nothing.
char const* formatConversion(TraceLine& line, char const* at, va_list& args)
{
    int star[2] = {0, 0};
    int stars = 0;
    char const* cursor = at + 1;
    while (*cursor != '\0' && strchr("-+ #0123456789.*", *cursor) != nullptr) {
        if (*cursor == '*' && stars < 2) {
            star[stars++] = va_arg(args, int);
        }
        ++cursor;
    }
    char const* const modifierStart = cursor;
    while (*cursor != '\0' && strchr("hlLqjzt", *cursor) != nullptr) {
        ++cursor;
    }
    char directive[32];
    size_t const length = static_cast<size_t>(cursor - at + 1);
    if (*cursor == '\0' || length >= sizeof(directive)) {
        line.appendLiteral(at, strlen(at));
        return at + strlen(at);
    }
    memcpy(directive, at, length);
    directive[length] = '\0';
    size_t const modifier = static_cast<size_t>(cursor - modifierStart);
    bool const wide = modifier == 2 || (modifier == 1 && strchr("lzjtq", modifierStart[0]) != nullptr);
    bool const longDouble = modifier == 1 && modifierStart[0] == 'L';

    char piece[TraceLine::kSize];
    int written = 0;
    switch (*cursor) {
    case 'd':
    case 'i':
    case 'u':
    case 'x':
    case 'X':
    case 'o':
    case 'c':
        written = wide ? formatPiece(piece, sizeof(piece), directive, stars, star, va_arg(args, long long))
                       : formatPiece(piece, sizeof(piece), directive, stars, star, va_arg(args, int));
        break;
    case 'e':
    case 'E':
    case 'f':
    case 'F':
    case 'g':
    case 'G':
    case 'a':
    case 'A':
        written = longDouble ? formatPiece(piece, sizeof(piece), directive, stars, star, va_arg(args, long double))
                             : formatPiece(piece, sizeof(piece), directive, stars, star, va_arg(args, double));
        break;
    case 's':
    case 'p': {
        void const* value = va_arg(args, void const*);
        if (*cursor == 's' && value == nullptr) {
            value = "(null)";
        }
        written = formatPiece(piece, sizeof(piece), directive, stars, star, value);
        break;
    }
    case 'n':
        (void)va_arg(args, void*);
        break;
    default:
        line.appendLiteral(at, length);
        break;
    }
    if (written > 0) {
        // What an argument gave is outside text: it stands as it is.
        size_t const size = static_cast<size_t>(written);
        line.append(piece, size < sizeof(piece) ? size : sizeof(piece) - 1);
        line.markCut(size >= sizeof(piece));
    }
    return cursor + 1;
}

FatalHandler sFatalHandler = nullptr;

} // namespace

void setFatalHandler(FatalHandler handler)
{
    sFatalHandler = handler;
}

void DEV_TRACE(char const* format, ...)
{
    TraceLine line;
    va_list args;
    va_start(args, format);
    char const* cursor = format;
    while (*cursor != '\0') {
        char const* percent = strchr(cursor, '%');
        // A "%%" belongs to the text of the format.
        while (percent != nullptr && percent[1] == '%') {
            percent = strchr(percent + 2, '%');
        }
        if (percent == nullptr) {
            line.appendLiteral(cursor, strlen(cursor));
            break;
        }
        line.appendLiteral(cursor, static_cast<size_t>(percent - cursor));
        cursor = formatConversion(line, percent, args);
    }
    va_end(args);
    line.finish();
    fputs(line.getText(), stderr);
    fflush(stderr);
}

void dev_assert(char const* message, char const* file, unsigned int line)
{
    if (sFatalHandler != nullptr) {
        sFatalHandler(message);
    }
    char buffer[512];
    snprintf(buffer, sizeof(buffer), "%s(%d) : %s\n", file, line, message);
    char text[512];
    snprintf(text, sizeof(text), "%s(%d) : %s", file, line, message);
    platform::showStopAlert("Assertion", text);
    DEV_TRACE("%s", buffer);
    abort();
}

void DEV_ERROR(char const* message)
{
    if (sFatalHandler != nullptr) {
        sFatalHandler(message);
    }
    platform::showStopAlert("Error", message);
    DEV_TRACE("%s", message);
    abort();
}
