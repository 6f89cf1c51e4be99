#include "plaintext.h"

namespace OviAPI {

QString withoutMnemonic(const QString& caption)
{
    QString plain;
    for (qsizetype i = 0; i < caption.size(); ++i) {
        if (caption[i] == '&' && i + 1 < caption.size())
            ++i;
        plain += caption[i];
    }
    return plain;
}

QString plainToolTip(const QString& text)
{
    if (text.isEmpty())
        return {};
    return "<span>" + text.toHtmlEscaped().replace('\n', "<br>") + "</span>";
}

} // namespace OviAPI
