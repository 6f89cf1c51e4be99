#include <oviapi/atomicfile.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <system_error>
#include <thread>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <oviapi/text.h>

#include "tests/support/smalldisk.h"

namespace fs = std::filesystem;
using OviAPI::AtomicFileWriter;
using OviAPI::cleanStaleTemporaries;
using OviAPI::writeFileAtomically;

namespace {

class AtomicFile : public testing::Test {
protected:
    AtomicFile()
    {
        std::string name = (fs::temp_directory_path() / "ovi-atomic-XXXXXX").string();
        m_folder = ::mkdtemp(name.data());
    }
    ~AtomicFile() override
    {
        ::chmod(m_folder.c_str(), 0700);
        std::error_code ignored; // a left-over folder fails no test
        fs::remove_all(m_folder, ignored);
    }

    fs::path file(const char* name) const { return m_folder / name; }
    static void write(const fs::path& path, std::string_view bytes)
    {
        writeFileAtomically(path.wstring(), bytes);
    }
    static std::string read(const fs::path& path)
    {
        std::ifstream stream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    static mode_t mode(const fs::path& path)
    {
        struct stat status {};
        EXPECT_EQ(::stat(path.c_str(), &status), 0);
        return status.st_mode & 07777;
    }
    long entries() const { return std::distance(fs::directory_iterator(m_folder), {}); }

    // The error code of a write; 0 when it succeeds.
    static int failure(const fs::path& path, std::string_view bytes)
    {
        try {
            write(path, bytes);
        } catch (const std::system_error& error) {
            EXPECT_NE(std::string(error.what()).find("could not be written"), std::string::npos);
            return error.code().value();
        }
        return 0;
    }

    // Runs the function in a child process, as a user without rights when this one is root.
    template<class F>
    static int inChild(F function)
    {
        const pid_t child = ::fork();
        if (child == 0) {
            if (::geteuid() == 0 && ::setresuid(65534, 65534, 65534) != 0)
                ::_exit(99);
            ::_exit(function());
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128;
    }

    fs::path m_folder;
};

TEST_F(AtomicFile, ANewFileIsWrittenWholeAndIsTheOwnersAlone)
{
    write(file("a"), "some text");
    EXPECT_EQ(read(file("a")), "some text");
    EXPECT_EQ(mode(file("a")), 0600U);
    EXPECT_EQ(entries(), 1);
}

TEST_F(AtomicFile, AnEmptyContentGivesAnEmptyFile)
{
    write(file("a"), "something");
    write(file("a"), "");
    EXPECT_EQ(fs::file_size(file("a")), 0U);
}

TEST_F(AtomicFile, AnExistingFileKeepsItsMode)
{
    write(file("a"), "old");
    ::chmod(file("a").c_str(), 0644);
    write(file("a"), "new");
    EXPECT_EQ(read(file("a")), "new");
    EXPECT_EQ(mode(file("a")), 0644U);
}

TEST_F(AtomicFile, PiecesReplaceTheFileTogetherAndOnlyThen)
{
    write(file("a"), "old");
    AtomicFileWriter writer(file("a").wstring());
    writer.append("one ");
    writer.append("");
    writer.append("two");
    EXPECT_EQ(read(file("a")), "old");
    writer.commit();
    EXPECT_EQ(read(file("a")), "one two");
    EXPECT_EQ(entries(), 1);
}

TEST_F(AtomicFile, PiecesWithoutAnEndLeaveTheOldFileAndNothingElse)
{
    write(file("a"), "old");
    {
        AtomicFileWriter writer(file("a").wstring());
        writer.append("one");
        AtomicFileWriter fresh(file("b").wstring());
        fresh.append("two");
    }
    EXPECT_EQ(read(file("a")), "old");
    EXPECT_FALSE(fs::exists(file("b")));
    EXPECT_EQ(entries(), 1);
}

TEST_F(AtomicFile, ASymbolicLinkStaysAndItsTargetIsReplaced)
{
    fs::create_directory(file("real"));
    write(file("real/options"), "old");
    fs::create_symlink("real/options", file("inner"));
    fs::create_symlink(file("inner"), file("outer"));
    write(file("outer"), "new");
    EXPECT_TRUE(fs::is_symlink(file("outer")));
    EXPECT_TRUE(fs::is_symlink(file("inner")));
    EXPECT_EQ(read(file("real/options")), "new");
    EXPECT_FALSE(fs::is_symlink(file("real/options")));
}

TEST_F(AtomicFile, TheTargetOfADanglingLinkIsMade)
{
    fs::create_symlink("later", file("link"));
    write(file("link"), "text");
    EXPECT_TRUE(fs::is_symlink(file("link")));
    EXPECT_EQ(read(file("later")), "text");
}

TEST_F(AtomicFile, ALinkToItselfIsAnError)
{
    fs::create_symlink("loop", file("loop"));
    EXPECT_EQ(failure(file("loop"), "x"), ELOOP);
}

TEST_F(AtomicFile, WhatIsNoFileIsNotReplaced)
{
    EXPECT_EQ(failure(m_folder, "x"), EISDIR);
    ASSERT_EQ(::mkfifo(file("pipe").c_str(), 0600), 0);
    EXPECT_EQ(failure(file("pipe"), "x"), EINVAL);
    EXPECT_TRUE(fs::is_fifo(file("pipe")));
}

TEST_F(AtomicFile, AMissingFolderIsAnErrorThatNamesTheFile)
{
    try {
        write(file("nowhere/a"), "x");
        FAIL();
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code().value(), ENOENT);
        EXPECT_NE(std::string(error.what()).find("nowhere/a"), std::string::npos);
    }
}

TEST_F(AtomicFile, AReadOnlyFolderLeavesTheOldFileWhole)
{
    write(file("a"), "old");
    ::chmod(file("a").c_str(), 0666);
    ::chmod(m_folder.c_str(), 0555);
    const fs::path target = file("a");
    EXPECT_EQ(inChild([&] { return failure(target, "new"); }), EACCES);
    EXPECT_EQ(read(target), "old");
    EXPECT_EQ(entries(), 1);
}

TEST_F(AtomicFile, AFileThatMayNotBeWrittenIsNotReplaced)
{
    write(file("a"), "old");
    ::chmod(file("a").c_str(), 0444);
    ::chmod(m_folder.c_str(), 0777);
    const fs::path target = file("a");
    EXPECT_EQ(inChild([&] { return failure(target, "new"); }), EACCES);
    EXPECT_EQ(read(target), "old");
    EXPECT_EQ(entries(), 1);
}

TEST_F(AtomicFile, AFileSizeLimitLeavesTheOldFileWholeAndTheProgramRunning)
{
    write(file("a"), "old");
    ::chmod(file("a").c_str(), 0666);
    ::chmod(m_folder.c_str(), 0777);
    const fs::path target = file("a");
    const int result = inChild([&] {
        const rlimit limit{4096, 4096};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        return failure(target, std::string(100'000, 'x'));
    });
    EXPECT_EQ(result, EFBIG);
    EXPECT_EQ(read(target), "old");
    EXPECT_EQ(entries(), 1);
}

TEST_F(AtomicFile, AFullDiskLeavesTheOldFileWholeAndIsToldAsSuch)
{
    if (!SmallDisk::isHere()) {
        if (!SmallDisk::isPossible())
            GTEST_SKIP() << "this user may mount nothing here, not even in a namespace of its own";
        EXPECT_EQ(SmallDisk::runThisTest(), 0);
        return;
    }
    const std::string old(6000, 'o');
    write(file("a"), old);
    SmallDisk::fill(m_folder);
    EXPECT_EQ(failure(file("a"), "new"), ENOSPC);
    EXPECT_EQ(failure(file("a"), std::string(30'000, 'n')), ENOSPC);
    EXPECT_EQ(failure(file("b"), "another"), ENOSPC);
    EXPECT_EQ(read(file("a")), old);
    EXPECT_EQ(entries(), 2);
    SmallDisk::empty(m_folder);
    EXPECT_EQ(failure(file("a"), "new"), 0);
    EXPECT_EQ(read(file("a")), "new");
}

TEST_F(AtomicFile, TheSizeSignalIsNotBlockedAfterwards)
{
    write(file("a"), "x");
    sigset_t blocked;
    ::pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
    EXPECT_EQ(::sigismember(&blocked, SIGXFSZ), 0);
}

TEST_F(AtomicFile, TwoHundredKilledWritersLeaveNoTornFile)
{
    const std::string one(300'000, 'a');
    const std::string other(200'000, 'b');
    const fs::path target = file("options");
    write(target, one);
    std::mt19937 random(20'261);
    int torn = 0;
    for (int round = 0; round < 200; ++round) {
        const long delay = std::uniform_int_distribution<long>(1, 3'000'000)(random);
        const pid_t child = ::fork();
        if (child == 0) {
            timer_t timer{};
            sigevent event{};
            event.sigev_notify = SIGEV_SIGNAL;
            event.sigev_signo = SIGKILL;
            itimerspec when{};
            when.it_value.tv_nsec = delay;
            if (::timer_create(CLOCK_MONOTONIC, &event, &timer) != 0)
                ::_exit(1);
            ::timer_settime(timer, 0, &when, nullptr);
            for (;;) {
                write(target, other);
                write(target, one);
            }
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status));
        const std::string now = read(target);
        torn += now != one && now != other;
    }
    EXPECT_EQ(torn, 0);
    const long left = entries() - 1;
    EXPECT_EQ(cleanStaleTemporaries(target.wstring()), left);
    EXPECT_EQ(entries(), 1);
    RecordProperty("temporaries", std::to_string(left));
}

TEST_F(AtomicFile, TheLastOfTwoWritersWinsWhole)
{
    const std::string one(200'000, 'a');
    const std::string other(150'000, 'b');
    const fs::path target = file("a");
    const auto writer = [&](const std::string& text) {
        for (int i = 0; i < 50; ++i)
            write(target, text);
    };
    std::thread first(writer, one);
    std::thread second(writer, other);
    for (int i = 0; i < 100; ++i)
        cleanStaleTemporaries(target.wstring());
    first.join();
    second.join();
    const std::string now = read(target);
    EXPECT_TRUE(now == one || now == other);
    EXPECT_EQ(entries(), 1);
}

TEST_F(AtomicFile, CleaningLeavesTheFilesOfLivingProcessesAndStrangersAlone)
{
    const pid_t dead = ::fork();
    if (dead == 0)
        ::_exit(0);
    ::waitpid(dead, nullptr, 0);
    const std::string gone = ".a." + std::to_string(dead) + "-0.tmp";
    const std::string living = ".a." + std::to_string(::getppid()) + "-0.tmp";
    const std::string number = std::to_string(dead);
    const std::vector<std::string> strangers = {living,
                                                "a",
                                                ".b." + number + "-0.tmp",
                                                ".a." + number + ".tmp",
                                                ".a." + number + "-x.tmp",
                                                ".a.tmp",
                                                "a." + number + "-0.tmp"};
    for (const std::string& name : strangers)
        std::ofstream(m_folder / name) << "x";
    std::ofstream(m_folder / gone) << "x";
    EXPECT_EQ(cleanStaleTemporaries(file("a").wstring()), 1);
    EXPECT_FALSE(fs::exists(m_folder / gone));
    for (const std::string& name : strangers)
        EXPECT_TRUE(fs::exists(m_folder / name)) << name;
}

TEST_F(AtomicFile, ALeftOverOfThisProcessNumberNeitherBlocksAWriteNorSurvivesCleaning)
{
    std::ofstream(file((".a." + std::to_string(::getpid()) + "-0.tmp").c_str())) << "x";
    write(file("a"), "text");
    EXPECT_EQ(read(file("a")), "text");
    EXPECT_EQ(cleanStaleTemporaries(file("a").wstring()), 1);
    EXPECT_EQ(entries(), 1);
}

TEST_F(AtomicFile, TheLongestNameCanBeWritten)
{
    const fs::path target = m_folder / std::string(255, 'n');
    write(target, "text");
    EXPECT_EQ(read(target), "text");
}

TEST_F(AtomicFile, APathThatTheLocaleCannotNameIsRefused)
{
    EXPECT_EQ(failure("", "x"), ENOENT);
    try {
        writeFileAtomically(m_folder.wstring() + L"/\xD800", "x");
        FAIL();
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code().value(), EILSEQ);
    }
    EXPECT_EQ(cleanStaleTemporaries(L""), 0);
    EXPECT_EQ(entries(), 0);
}

} // namespace
