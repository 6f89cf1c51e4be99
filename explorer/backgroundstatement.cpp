#include "explorer/backgroundstatement.h"

#include <atomic>
#include <memory>

#include <dorcpp/charset.h>

class BackgroundStatement::DoneFlag : public DorCPP::DorCursor::Handler {
public:
    void handler(unsigned short, int) override
    {
        if (m_state.exchange(Done) == Left)
            delete this;
    }
    bool isDone() const { return m_state == Done; }
    void leave()
    {
        if (m_state.exchange(Left) == Done)
            delete this;
    }

private:
    enum State : int { Running, Done, Left };
    std::atomic<int> m_state = Running;
};

BackgroundStatement::BackgroundStatement(const DorCPP::DorConnect& connection,
                                         const std::wstring& sql, int mode)
{
    auto flag = std::make_unique<DoneFlag>();
    m_cursor.create(connection, mode, nullptr, false);
    m_cursor.execute(DorCPP::narrow(sql, DorCPP::getStdCharset()).c_str(), flag.get());
    m_flag = flag.release();
}

BackgroundStatement::BackgroundStatement(const DorCPP::DorConnect& connection,
                                         const DorCPP::DorStatement& statement,
                                         const DorCPP::BindMap& values, int mode)
{
    auto flag = std::make_unique<DoneFlag>();
    m_cursor.create(connection, mode, nullptr, false);
    m_cursor.execute(statement, &values, flag.get());
    m_flag = flag.release();
}

BackgroundStatement::~BackgroundStatement()
{
    try {
        m_cursor.close();
    } catch (const DorCPP::DorX&) { // the answer is not wanted any more
    }
    m_flag->leave();
}

bool BackgroundStatement::isDone() const
{
    return m_flag->isDone();
}

DorCPP::DorCursor& BackgroundStatement::result()
{
    const DorCPP::DorX& error = m_cursor.lastError();
    if (error.code() != 0)
        throw DorCPP::DorX(error);
    return m_cursor;
}
