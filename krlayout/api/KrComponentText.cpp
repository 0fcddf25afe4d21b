#include <krlayout/api/KrComponentText.h>

bool KrComponentText::ParseHalf(std::wstring const& half, std::wstring& connector,
                                std::wstring& pins)
{
    std::size_t const at = half.find(L'@');
    std::wstring const head = at == std::wstring::npos ? std::wstring() : half.substr(0, at);
    std::wstring const tail = at == std::wstring::npos ? half : half.substr(at + 1);
    std::size_t const inner = tail.find(L'@');
    if (inner == std::wstring::npos || inner < 1) {
        return false;
    }
    connector = tail;
    pins = head;
    return true;
}

int KrComponentText::Parse(std::wstring const& text,
                           std::vector<std::pair<std::wstring, std::wstring>>& connectors)
{
    std::size_t const colon = text.find(L':');
    std::wstring const halves[2] = {
        colon == std::wstring::npos ? std::wstring() : text.substr(0, colon),
        colon == std::wstring::npos ? text : text.substr(colon + 1)};
    for (std::wstring const& half : halves) {
        std::wstring connector;
        std::wstring pins;
        if (ParseHalf(half, connector, pins)) {
            connectors.emplace_back(connector, pins);
        }
    }
    return 0;
}
