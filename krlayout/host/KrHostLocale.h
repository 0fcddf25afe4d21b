// Locale-aware comparison of wide strings with the user's default locale.
#pragma once

#include <krlayout/krlayout_export.h>

#include <locale>
#include <string>

class KRLAYOUT_EXPORT KrHostLocale {
public:
    // The user's default locale as the environment names it; the classic locale when the
    // environment names one that cannot be used.
    static std::locale UserDefault();
    // Negative, zero or positive as a collates before, equal to or after b in the user's default
    // locale (no flags: case and accents count).
    static int Compare(std::wstring const& a, std::wstring const& b);
    static bool Equal(std::wstring const& a, std::wstring const& b);
};
