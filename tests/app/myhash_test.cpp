#include "app/myhash.h"

#include <limits>
#include <map>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace {

using Numbers = HashOf<uint64_t, int>;

uint64_t sameSlot(const uint64_t&)
{
    return 7;
}

uint32_t doubled(uint32_t capacity)
{
    return capacity * 2;
}

uint32_t shrunk(uint32_t capacity)
{
    return capacity / 2;
}

bool sameLastDigit(const uint64_t& a, const uint64_t& b)
{
    return a % 10 == b % 10;
}

uint64_t lastDigit(const uint64_t& key)
{
    return key % 10;
}

bool neverEqual(const uint64_t&, const uint64_t&)
{
    return false;
}

} // namespace

TEST(HashOf, AMissingKeyIsInsertedWithADefaultValue)
{
    Numbers table(10, 10, 0.7);
    EXPECT_EQ(table.find(5), nullptr);
    EXPECT_EQ(table[5], 0);
    table[5] = 50;
    EXPECT_EQ(table[5], 50);
    EXPECT_EQ(table.count(), 1U);
}

TEST(HashOf, SetKeyGivesAnExistingKeyTheNewValue)
{
    Numbers table(10, 10, 0.7);
    table.setKey(1, 10);
    table.setKey(1, 11);
    EXPECT_EQ(table[1], 11);
    EXPECT_EQ(table.count(), 1U);
}

TEST(HashOf, BucketsAreListedNewestFirst)
{
    Numbers table(2, 5, 0.5);
    for (const uint64_t key : {3U, 1U, 2U})
        table.setKey(key, static_cast<int>(key));
    std::vector<uint64_t> keys;
    for (const auto* bucket = table.first(); bucket; bucket = bucket->next)
        keys.push_back(bucket->key);
    EXPECT_EQ(keys, (std::vector<uint64_t>{2, 1, 3}));
}

TEST(HashOf, TheTableGrowsBeforeTheLoadFactorWouldBeExceeded)
{
    Numbers table(10, 4, 0.5);
    for (uint64_t key = 0; key < 5; ++key)
        table.setKey(key, 0);
    EXPECT_EQ(table.capacity(), 10U);
    table.setKey(5, 0);
    EXPECT_EQ(table.capacity(), 14U);
}

TEST(HashOf, AGrowthFunctionGivesTheNewCapacity)
{
    Numbers table(4, 1, 0.5, nullptr, doubled);
    for (uint64_t key = 0; key < 3; ++key)
        table.setKey(key, 0);
    EXPECT_EQ(table.capacity(), 8U);
}

TEST(HashOf, AGrowthFunctionThatShrinksTheTableIsNotFollowed)
{
    Numbers table(4, 1, 0.25, nullptr, shrunk);
    for (uint64_t key = 0; key < 4; ++key)
        table[key] = static_cast<int>(key);
    EXPECT_EQ(table.capacity(), 4U);
    EXPECT_EQ(table[3], 3);
}

TEST(HashOf, KeysOfOneSlotAreProbedLinearly)
{
    Numbers table(8, 8, 1.0, sameSlot);
    for (uint64_t key = 0; key < 8; ++key)
        table[key] = static_cast<int>(key * key);
    EXPECT_EQ(table.capacity(), 8U);
    for (uint64_t key = 0; key < 8; ++key)
        EXPECT_EQ(table[key], static_cast<int>(key * key));
    EXPECT_EQ(table.find(99), nullptr);
}

TEST(HashOf, AnEqualityFunctionComparesTheKeys)
{
    Numbers table(20, 10, 0.7, lastDigit, nullptr, sameLastDigit);
    table[13] = 5;
    EXPECT_EQ(table[23], 5);
    EXPECT_EQ(table.count(), 1U);
}

TEST(HashOf, AKeyThatCannotBeInsertedThrows)
{
    Numbers full(2, 0, 10.0);
    full[1] = 1;
    full[2] = 2;
    full.setKey(3, 3);
    EXPECT_EQ(full.count(), 2U);
    Numbers lost(4, 4, 0.7, nullptr, nullptr, neverEqual);
    for (Numbers* table : {&full, &lost}) {
        try {
            (*table)[3];
            FAIL() << "the key was found";
        } catch (const LException& e) {
            EXPECT_EQ(e.source(), "myhash");
            EXPECT_EQ(e.line(), 413);
            EXPECT_EQ(e.message(), L"The value in hash table can't be created");
        }
    }
}

TEST(HashOf, ATableWithoutSlotsGrowsWhenItIsFirstUsed)
{
    Numbers table(0, 3, 0.7);
    EXPECT_EQ(table.find(1), nullptr);
    table[1] = 1;
    EXPECT_EQ(table[1], 1);
    Numbers never(0, 0, 0.7);
    EXPECT_THROW(never[1], LException);
}

TEST(HashOf, ReferencesStayValidWhileTheTableGrows)
{
    Numbers table(1, 1, 0.5);
    int& first = table[1];
    for (uint64_t key = 2; key < 200; ++key)
        table[key] = 0;
    first = 77;
    EXPECT_EQ(table[1], 77);
}

TEST(HashOf, TextAndPointersCanBeKeys)
{
    HashOf<std::string, int> texts(4, 4, 0.7);
    texts["b"] = 2;
    texts["a"] = 1;
    EXPECT_EQ(texts["b"], 2);
    int places[2] = {};
    HashOf<int*, int> pointers(4, 4, 0.7);
    pointers[&places[1]] = 5;
    EXPECT_EQ(pointers.find(&places[0]), nullptr);
    EXPECT_EQ(pointers[&places[1]], 5);
}

TEST(HashOf, RandomKeysBehaveAsInAStandardMap)
{
    std::mt19937_64 random(20240611);
    Numbers table(3, 97, 0.75);
    std::map<uint64_t, int> map;
    for (int i = 0; i < 20000; ++i) {
        const uint64_t key = random() % 5000 << (random() % 2 ? 40 : 0);
        const int value = static_cast<int>(random() % 1000);
        table.setKey(key, value);
        map[key] = value;
    }
    EXPECT_EQ(table.count(), map.size());
    for (const auto& [key, value] : map)
        ASSERT_EQ(table[key], value) << key;
    uint32_t listed = 0;
    for (const auto* bucket = table.first(); bucket; bucket = bucket->next)
        ++listed;
    EXPECT_EQ(listed, map.size());
}

TEST(HashOf, AMillionBucketsAreFreedWithoutRecursion)
{
    Numbers table(2000000, 1, 0.7);
    for (uint64_t key = 0; key < 1000000; ++key)
        table.setKey(key, 1);
    EXPECT_EQ(table.count(), 1000000U);
}

TEST(VectorOf, ItGrowsByItsStepAndKeepsItsElements)
{
    VectorOf<std::string> list(2, 3);
    for (int i = 0; i < 6; ++i)
        list.append(std::to_string(i));
    EXPECT_EQ(list.count(), 6U);
    EXPECT_EQ(list.capacity(), 8U);
    list.insert(1, "x");
    list.remove(0);
    EXPECT_EQ(list[0], "x");
    EXPECT_EQ(list[5], "5");
}

TEST(VectorOf, AGrowthStepOfZeroStillGrows)
{
    VectorOf<int> list(0, 0);
    for (int i = 0; i < 10; ++i)
        list.append(i);
    EXPECT_EQ(list.count(), 10U);
    EXPECT_EQ(list[9], 9);
}
