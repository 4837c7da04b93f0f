#include "htmlText.h"

std::string htmlText(std::string_view text)
{
    std::string html;
    html.reserve(text.size());
    for (const char character : text) {
        switch (character) {
        case '&':
            html += "&amp;";
            break;
        case '<':
            html += "&lt;";
            break;
        case '>':
            html += "&gt;";
            break;
        case '"':
            html += "&quot;";
            break;
        case '\'':
            html += "&#39;";
            break;
        default:
            html += character;
        }
    }
    return html;
}
