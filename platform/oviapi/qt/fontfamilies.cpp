#include <oviapi/fontfamilies.h>

#include <algorithm>

#include <QFontDatabase>

#include "convert.h"
#include "toolkit.h"

namespace OviAPI {

std::vector<std::wstring> fontFamilies()
{
    std::vector<std::wstring> names;
    if (!Toolkit::current())
        return names;
    const QStringList families = QFontDatabase::families(QFontDatabase::Latin);
    for (const QString& family : families) {
        if (QFontDatabase::isPrivateFamily(family))
            continue;
        // The toolkit tells faces of one name from several makers by the maker in brackets.
        std::wstring name = fromQString(family.section(QStringLiteral(" ["), 0, 0));
        if (std::find(names.begin(), names.end(), name) == names.end())
            names.push_back(std::move(name));
    }
    return names;
}

} // namespace OviAPI
