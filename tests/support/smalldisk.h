// A disk of 64 KB for one test, to see what happens when it is full.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include <fcntl.h>
#include <unistd.h>

#include <gtest/gtest.h>

// The test that is running runs again in a process of its own, the only one that sees the disk;
// there temporary files are made on it. Mounting takes a namespace of mounts and, for a user
// without rights, one of users.
class SmallDisk {
public:
    // Whether this process is the one with the disk.
    static bool isHere() { return std::getenv(variable) != nullptr; }

    // Whether this user may mount one here.
    static bool isPossible() { return run("true 2>/dev/null") == 0; }

    // Runs the running test again, on the disk. 0 when it passed.
    static int runThisTest()
    {
        const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
        return run(std::filesystem::read_symlink("/proc/self/exe").string() +
                   " --gtest_filter=" + test.test_suite_name() + "." + test.name());
    }

    // Takes every free byte of the disk that holds the folder.
    static void fill(const std::filesystem::path& folder)
    {
        const int file = ::open((folder / "filler").c_str(), O_CREAT | O_WRONLY, 0600);
        const std::string block(4096, 'x');
        while (::write(file, block.data(), block.size()) > 0) {
        }
        ::close(file);
    }
    static void empty(const std::filesystem::path& folder)
    {
        std::filesystem::remove(folder / "filler");
    }

private:
    static constexpr const char* variable = "OVI_SMALL_DISK";

    static int run(const std::string& command)
    {
        std::string folder = (std::filesystem::temp_directory_path() / "ovi-disk-XXXXXX").string();
        if (!::mkdtemp(folder.data()))
            return -1;
        const std::string line = "unshare --mount " +
                                 std::string(::geteuid() == 0 ? "" : "--map-root-user ") +
                                 "sh -c 'mount -t tmpfs -o size=64k none \"$0\" && TMPDIR=\"$0\" " +
                                 variable + "=1 " + command + "' '" + folder + "'";
        const int status = std::system(line.c_str());
        std::error_code ignored; // an empty folder that stays behind does not change a result
        std::filesystem::remove(folder, ignored);
        return status;
    }
};
