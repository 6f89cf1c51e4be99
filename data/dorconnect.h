// A connection that can be opened once more.
#pragma once

#include <dorcpp/connect.h>
#include <oviapi/object.h>
#include <oviapi/timer.h>

#include "app/export.h"

// Remembers the four strings it was opened with, at most 255 bytes of each; a longer one is cut,
// also for the connecting itself. They may hold a password: they are overwritten when they are
// replaced and when the object goes. User-interface thread only.
class OVIEXT_API xDorConnect : public virtual OviAPI::Object, public virtual DorCPP::DorConnect {
public:
    xDorConnect();
    ~xDorConnect() override;

    // The arguments of DorConnect::createCS, in its order; null counts as empty. Returns the
    // channel number. Throws DorX.
    int CreateCS(const char* a, const char* b, const char* c, const char* d, int mode, bool flag1,
                 bool flag2);
    // A connection of its own with the same strings, those that are not null replaced. mode: -1 for
    // the present one. The caller owns the result. Throws DorX.
    [[nodiscard]] xDorConnect* Duplicate(const char* a, const char* b, const char* c, const char* d,
                                         int mode) const;

    // Asks the server whether the session still answers. Throws nothing.
    bool isAlive() const;
    // Asks and forgets the answer, which keeps the session from idling out. For the timer. Returns
    // 0.
    OviAPI::SlotResult onTimer(OviAPI::Object* sender);
    // 1000 ms. Its owner starts it and connects it to onTimer.
    OviAPI::WTimer& keepAliveTimer() { return m_keepAlive; }

protected:
    static constexpr int stringSize = 256; // bytes, the ending zero included

    char m_first[stringSize] = {};
    char m_third[stringSize] = {};
    char m_second[stringSize] = {};
    char m_fourth[stringSize] = {};
    OviAPI::WTimer m_keepAlive{1000};
};
