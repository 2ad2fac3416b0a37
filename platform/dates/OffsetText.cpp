// SPDX-License-Identifier: Apache-2.0
#include "platform/dates/OffsetText.h"

#include <cstdlib>

namespace vorlan {

namespace {

void appendTwoDigits(std::string& text, int number) {
    text += static_cast<char>('0' + number / 10);
    text += static_cast<char>('0' + number % 10);
}

struct Form {
    bool saysZ; // of no offset
    bool hasColons;
    bool hasMinutes; // also where they are none
    bool hasSeconds; // where there are any
};

Form formOf(char letter, int count) {
    if (letter == 'Z') return {count == 5, count == 5, true, true};
    return {letter == 'X', count == 3 || count == 5, count > 1, count > 3};
}

} // namespace

void appendOffset(std::string& text, int seconds, char letter, int count) {
    const auto form = formOf(letter, count);
    const int all = std::abs(seconds);
    const int shown = form.hasSeconds ? all : all / 60 * 60;
    if (shown == 0 && form.saysZ) {
        text += 'Z';
        return;
    }
    text += seconds < 0 && shown != 0 ? '-' : '+';
    appendTwoDigits(text, shown / 3600);
    const int minutes = shown / 60 % 60;
    if (!form.hasMinutes && minutes == 0) return;
    if (form.hasColons) text += ':';
    appendTwoDigits(text, minutes);
    if (shown % 60 == 0) return;
    if (form.hasColons) text += ':';
    appendTwoDigits(text, shown % 60);
}

} // namespace vorlan
