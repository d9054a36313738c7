#include <string.h>

#include "floor.h"

char* putText(char* to, const char* text) {
    const size_t length = strlen(text);
    memcpy(to, text, length);
    return to + length;
}

char* putPadded(char* to, DWORD value, DWORD radix, int width) {
    char digits[12];
    int count = 0;
    do {
        digits[count++] = "0123456789abcdef"[value % radix];
        value /= radix;
    } while (value != 0);
    while (width-- > count) {
        *to++ = '0';
    }
    while (count > 0) {
        *to++ = digits[--count];
    }
    return to;
}

char* putNumber(char* to, DWORD value) {
    return putPadded(to, value, 10, 0);
}

char* putHandle(char* to, const void* handle) {
    if (handle == NULL) {
        return to;
    }
    *to++ = '0';
    *to++ = 'x';
    for (int shift = 60; shift >= 0; shift -= 4) {
        *to++ = "0123456789ABCDEF"[(ULONG_PTR)handle >> shift & 0xF];
    }
    return to;
}

char* putReply(char* to, LRESULT reply) {
    static const char* const names[] = {"NOPRINT", "YESPRINT", "WAITPRINT"};
    const LONG code = (LONG)reply;
    if (code >= NOPRINT && code <= WAITPRINT) {
        return putText(to, names[code]);
    }
    if (code < 0) {
        *to++ = '-';
        return putNumber(to, 0U - (DWORD)code);
    }
    return putNumber(to, (DWORD)code);
}
