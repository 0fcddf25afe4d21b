// The text of a component map entry, read the way a layout run reads it. An entry names up to two
// connectors, one for each end of its route segment: "PINS@CONNECTOR" or two of them joined by
// ":". The text is split at its first ":" (no first half without one, the whole text is then the
// second half); each half at its first "@" into head (the pins, empty without an "@") and tail
// (the connector). A half names a connector only when its tail itself holds an "@" at position 1
// or more ("1-4@X12@Injector 1": pins "1-4", connector "X12@Injector 1").
#pragma once

#include <krlayout/krlayout_export.h>

#include <string>
#include <utility>
#include <vector>

class KRLAYOUT_EXPORT KrComponentText {
public:
    // One half: true, with the connector (the tail) and the pins (the head), when it names one.
    static bool ParseHalf(std::wstring const& half, std::wstring& connector, std::wstring& pins);
    // The (connector, pins) pairs the text names: the first half's, then the second's. 0.
    static int Parse(std::wstring const& text,
                     std::vector<std::pair<std::wstring, std::wstring>>& connectors);
};
