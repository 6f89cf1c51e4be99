// rrsc OUTPUT [--english FILE...] [--russian FILE...] [--pictures FILE...]
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>

#include "compiler.h"

namespace {

enum class Role { None, English, Russian, Pictures };

Role roleOf(const char* argument)
{
    if (std::strcmp(argument, "--english") == 0)
        return Role::English;
    if (std::strcmp(argument, "--russian") == 0)
        return Role::Russian;
    return std::strcmp(argument, "--pictures") == 0 ? Role::Pictures : Role::None;
}

bool addFile(Rrsc::Compiler& compiler, Role role, const std::string& name)
{
    std::ifstream stream(name, std::ios::binary);
    const std::string content{std::istreambuf_iterator<char>(stream), {}};
    if (!stream.good() && !stream.eof()) {
        std::fprintf(stderr, "%s:1: the file cannot be read\n", name.c_str());
        return false;
    }
    if (role == Role::Pictures)
        compiler.addPictures(name, content, std::filesystem::path(name).parent_path());
    else
        compiler.addStrings(name, content, role == Role::English ? 1 : 2);
    return true;
}

bool save(const std::string& name, const std::string& bytes)
{
    std::ofstream stream(name, std::ios::binary | std::ios::trunc);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    stream.close();
    if (stream.good())
        return true;
    std::fprintf(stderr, "%s: the file cannot be written\n", name.c_str());
    std::error_code ignored; // the failure has been told
    if (std::filesystem::is_regular_file(name, ignored))
        std::filesystem::remove(name, ignored);
    return false;
}

int usage()
{
    std::fputs("usage: rrsc OUTPUT [--english FILE...] [--russian FILE...] [--pictures FILE...]\n",
               stderr);
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2)
        return usage();
    Rrsc::Compiler compiler;
    Role role = Role::None;
    bool read = true;
    for (int i = 2; i < argc; ++i) {
        if (const Role named = roleOf(argv[i]); named != Role::None)
            role = named;
        else if (role == Role::None)
            return usage();
        else
            read = addFile(compiler, role, argv[i]) && read;
    }
    compiler.checkLanguages();
    for (const std::string& error : compiler.errors())
        std::fprintf(stderr, "%s\n", error.c_str());
    if (!read || !compiler.errors().empty())
        return 1;
    return save(argv[1], compiler.result()) ? 0 : 1;
}
