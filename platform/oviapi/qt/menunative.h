// The toolkit's side of a menu.
#pragma once

#include <QAction>
#include <QList>

namespace OviAPI {

class WMenu;

struct MenuAccess {
    // The lines of the top level, made if need be.
    static QList<QAction*> actions(WMenu& menu);
};

} // namespace OviAPI
