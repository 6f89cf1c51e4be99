// Processes that are ended while they edit: what was acknowledged is there afterwards, and what was
// not is there as a whole or not at all. A few of each in the usual suite; as many as the long
// suite asks for with OVI_STRESS=1.
#include <atomic>
#include <csignal>
#include <cstdio>
#include <map>
#include <random>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

#include "../conformance/ownserver.h"
#include "editing.h"

using namespace Editing;

namespace {

constexpr int rows = 100;
constexpr const wchar_t* query = L"SELECT id, a, n FROM t ORDER BY id";

// The two cells of a row that one edit after the other sets to the same number.
std::wstring textOf(int number)
{
    return L"edit " + std::to_wstring(number);
}

// Edits rows in turn, from a number on; tells each acknowledged number to the pipe.
[[noreturn]] void editForEver(const std::string& path, int first, int pipe)
{
    try {
        DorCPP::DorConnect connection;
        connection.createCS("", "", path.c_str(), "", 0, false, true);
        xCDorvexDataSet data;
        data.Open(connection.channel(), query, 0, true);
        for (int number = first;; ++number) {
            const long row = number % rows + 1;
            if (store(data, 2, row, textOf(number)) != 0)
                _exit(2);
            if (write(pipe, &number, sizeof number) != sizeof number)
                _exit(3);
        }
    } catch (const DorCPP::DorX&) {
        _exit(4);
    }
}

// The texts of all rows; nothing when one cannot be read.
WideTexts textsOf(xCDorvexDataSet& data)
{
    WideTexts texts;
    for (long row = 1; row <= data.GetRowCount() && data.SetRow(row) == 0; ++row)
        texts.push_back(data.CellText(2));
    return texts.size() == rows ? texts : WideTexts();
}

// The numbers that were told, until the writer has gone.
std::vector<int> readAll(int pipe)
{
    std::vector<int> numbers;
    for (int number = 0; read(pipe, &number, sizeof number) == sizeof number;)
        numbers.push_back(number);
    return numbers;
}

} // namespace

TEST(EditKills, AnEditOfAFileThatWasAcknowledgedIsThereAfterTheProcessWasKilled)
{
    setlocale(LC_ALL, "C.UTF-8");
    const DorTest::Folder folder;
    const std::string path = folder.file("edits.db");
    {
        DorCPP::DorConnect connection;
        DorTest::open(connection, path);
        DorCPP::DorCursor cursor;
        cursor.create(connection, 0, nullptr, false);
        cursor.execute("CREATE TABLE t(id INTEGER PRIMARY KEY, a VARCHAR(40), n INTEGER)");
        cursor.execute("INSERT INTO t WITH RECURSIVE c(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM "
                       "c WHERE i < 100) SELECT i, 'edit 0', i FROM c");
    }
    std::mt19937 random(11);
    std::map<long, int> last; // number of the last acknowledged edit of a row
    const int kills = Conformance::isLong() ? 50 : 3;
    int next = 1;
    int acknowledged = 0;
    for (int kill = 0; kill < kills; ++kill) {
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        const pid_t child = fork();
        if (child == 0) {
            close(ends[0]);
            editForEver(path, next, ends[1]);
        }
        close(ends[1]);
        // Some edits, and then any moment.
        std::vector<int> told;
        for (int i = 0, wanted = 1 + static_cast<int>(random() % 20); i < wanted; ++i) {
            int number = 0;
            ASSERT_EQ(read(ends[0], &number, sizeof number), static_cast<ssize_t>(sizeof number));
            told.push_back(number);
        }
        for (auto i = random() % 200; i > 0; --i)
            std::this_thread::yield();
        ASSERT_EQ(::kill(child, SIGKILL), 0);
        const std::vector<int> rest = readAll(ends[0]);
        close(ends[0]);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status)) << WEXITSTATUS(status);
        told.insert(told.end(), rest.begin(), rest.end());
        for (const int number : told)
            last[number % rows + 1] = number;
        acknowledged += static_cast<int>(told.size());
        const int inFlight = told.back() + 1;
        next = inFlight + 1;

        DorCPP::DorConnect connection;
        connection.createCS("", "", path.c_str(), "", 0, true, true);
        xCDorvexDataSet data;
        data.Open(connection.channel(), query, 0, true);
        ASSERT_EQ(data.GetRowCount(), rows);
        for (long row = 1; row <= rows; ++row) {
            const std::wstring found = data.GetCellText(2, row);
            const bool wasInFlight = inFlight % rows + 1 == row && found == textOf(inFlight);
            EXPECT_TRUE(wasInFlight || found == textOf(last[row])) << "row " << row;
            if (wasInFlight)
                last[row] = inFlight;
        }
    }
    std::printf("%d kills, %d edits acknowledged, none lost\n", kills, acknowledged);
}

TEST(EditKills, AnEditOnAServerThatWasAcknowledgedIsThereAfterTheServerWasKilled)
{
    setlocale(LC_ALL, "C.UTF-8");
    const Conformance::OwnServer server;
    // Connects, and opens the rows where a dataset is given; again and again, as long as the server
    // is starting anew, which throws out those who have come too early.
    WideTexts found; // of the rows that were opened last
    const auto connect = [&](DorCPP::DorConnect& connection, xCDorvexDataSet* data) {
        std::string error;
        found.clear();
        for (const Conformance::Stopwatch watch; watch.ms() < 30'000; std::this_thread::yield()) {
            try {
                const std::string text = "host=127.0.0.1 port=" + server.at("port") +
                                         " dbname=" + server.at("database") +
                                         " options=-csynchronous_commit=on";
                connection.createCS(server.at("user").c_str(), server.at("password").c_str(),
                                    text.c_str(), "", 0, false, true);
                if (data)
                    data->Open(connection.channel(), query, 0, true);
                if (!data)
                    return;
                if (const WideTexts texts = textsOf(*data); !texts.empty()) {
                    found = texts;
                    return;
                }
                OviAPI::aCString said;
                data->GetLastErrorText(said);
                error.assign(said.begin(), said.end());
            } catch (const DorCPP::DorX& x) {
                error = x.what();
            }
        }
        FAIL() << "the server has not come back: " << error;
    };
    {
        DorCPP::DorConnect connection;
        connect(connection, nullptr);
        DorCPP::DorCursor cursor;
        cursor.create(connection, 0, nullptr, false);
        cursor.execute("CREATE TABLE t(id INTEGER PRIMARY KEY, a VARCHAR(40), n INTEGER)");
        cursor.execute("INSERT INTO t SELECT i, 'edit 0', i FROM generate_series(1, 100) i");
    }
    std::mt19937 random(12);
    std::map<long, int> last;
    const int kills = Conformance::isLong() ? 20 : 1;
    int acknowledged = 0;
    int number = 0;
    for (int kill = 0; kill < kills; ++kill) {
        DorCPP::DorConnect connection;
        xCDorvexDataSet data;
        data.SetRowCache(true);
        connect(connection, &data);
        DorCPP::DorCursor asking;
        asking.create(connection, 0, nullptr, false);
        asking.execute("SELECT pg_backend_pid()");
        asking.fetch(DorCPP::FetchFirst, 0);
        const pid_t process = std::stoi(DorTest::text(asking, 1));
        std::atomic<int> edits = 0;
        std::thread killer(
            [&, wanted = 1 + static_cast<int>(random() % 50), more = random() % 2000] {
                while (edits < wanted)
                    std::this_thread::yield();
                for (auto i = more; i > 0; --i)
                    std::this_thread::yield();
                ::kill(process, SIGKILL); // the server throws out everybody and starts again
            });
        long row = 0;
        while (true) {
            row = ++number % rows + 1;
            data.BeginEdit(row);
            if (store(data, 2, row, textOf(number)) != 0)
                break;
            last[row] = number;
            ++edits;
            ++acknowledged;
        }
        edits = 1000; // the killer need not wait any more
        killer.join();
        ASSERT_NE(data.getRowError(row), nullptr);
        EXPECT_EQ(data.getRowError(row)->kind, OviAPI::aCErrorHolder::Critical);

        DorCPP::DorConnect again;
        xCDorvexDataSet after;
        connect(again, &after);
        ASSERT_EQ(found.size(), size_t{rows});
        for (long i = 1; i <= rows; ++i) {
            const std::wstring& text = found[static_cast<size_t>(i) - 1];
            const bool wasInFlight = i == row && text == textOf(number);
            EXPECT_TRUE(wasInFlight || text == textOf(last[i])) << "row " << i;
            if (wasInFlight)
                last[i] = number;
        }
    }
    std::printf("%d ends of the server, %d edits acknowledged, none lost\n", kills, acknowledged);
}
