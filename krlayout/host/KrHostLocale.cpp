#include <krlayout/host/KrHostLocale.h>

#include <stdexcept>

std::locale KrHostLocale::UserDefault()
{
    try {
        return std::locale("");
    } catch (std::runtime_error const&) {
        return std::locale::classic();
    }
}

int KrHostLocale::Compare(std::wstring const& a, std::wstring const& b)
{
    std::locale const loc = UserDefault();
    std::collate<wchar_t> const& coll = std::use_facet<std::collate<wchar_t>>(loc);
    int const r = coll.compare(a.data(), a.data() + a.size(), b.data(), b.data() + b.size());
    return r < 0 ? -1 : (r > 0 ? 1 : 0);
}

bool KrHostLocale::Equal(std::wstring const& a, std::wstring const& b)
{
    return Compare(a, b) == 0;
}
