#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include <dorcpp/keylist.h>

using DorCPP::KeyList;

namespace {

void expectSame(const std::vector<int64_t>& keys)
{
    KeyList list;
    for (const int64_t key : keys)
        list.add(key);
    ASSERT_EQ(list.size(), keys.size());
    for (size_t i = 0; i < keys.size(); ++i)
        ASSERT_EQ(list[i], keys[i]) << i;
}

} // namespace

TEST(KeyList, RunsAreKept)
{
    std::vector<int64_t> keys;
    for (int64_t i = 0; i < 5000; ++i)
        keys.push_back(i - 2500);
    expectSame(keys);
}

TEST(KeyList, KeysInAnyOrderAreKept)
{
    std::vector<int64_t> keys;
    for (int64_t i = 0; i < 5000; ++i)
        keys.push_back(i * 7919 % 5003);
    expectSame(keys);
}

TEST(KeyList, TheWholeRangeOf64BitsIsKept)
{
    std::vector<int64_t> keys(3000, 0);
    keys[5] = INT64_MIN;
    keys[6] = INT64_MAX;
    keys[2000] = INT64_MAX;
    expectSame(keys);
    std::vector<int64_t> high;
    for (int64_t i = 0; i < 1024; ++i)
        high.push_back(INT64_MAX - 1023 + i);
    expectSame(high);
}

TEST(KeyList, ExactlyOneChunkAndNoneAreKept)
{
    expectSame({});
    expectSame(std::vector<int64_t>(1024, 3));
    expectSame(std::vector<int64_t>(1025, -3));
}
