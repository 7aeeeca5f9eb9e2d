#pragma once

#include <cstring>

// Splits text in place like POSIX strtok_r, but not at delimiters between double quotes.
//
// `str` is the NUL-terminated text on the first call and null on later ones, `delimiters` a set
// of characters, and `*saveptr` keeps the position. Returns the next token, without one leading and
// one trailing quote, or null if there is none.
//
// An unclosed quote makes the rest part of its token. Delimiters are skipped after a token; a call
// that starts at a delimiter returns an empty one.
[[maybe_unused]] static char* strtok_quo(char* str, const char* delimiters, char** saveptr)
{
    if (!saveptr)
        return nullptr;
    if (str)
        *saveptr = str;
    char* const start = *saveptr;
    if (!start || !*start)
        return nullptr;

    char* end = start;
    for (bool quoted = false; *end; ++end) {
        if (*end == '"')
            quoted = !quoted;
        if (!quoted && std::strchr(delimiters, *end))
            break;
    }
    *saveptr = *end ? end + 1 + std::strspn(end + 1, delimiters) : end;

    char* const token = *start == '"' ? start + 1 : start;
    if (end > start && end[-1] == '"')
        end[-1] = '\0';
    *end = '\0';
    return token;
}
