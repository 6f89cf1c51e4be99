// The shared containers: VectorOf, a growable array, and HashOf, a map by open addressing.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include <oviapi/lexception.h>
#include <oviapi/vectorof.h>

// One entry of a HashOf. The link leads to the entry made before it.
template<class K, class V>
struct Bucket {
    K key;
    V value;
    Bucket* next;
};

// A map from keys to values with linear probing. Every bucket also stands in one list, newest
// first, for iteration; a bucket keeps its address until the table is destroyed. Entries cannot be
// taken out. An insertion that finds no empty slot (a load factor over 1, a growth of 0) leaves
// the table as it is.
template<class K, class V>
class HashOf {
public:
    using Entry = Bucket<K, V>;
    using HashFunction = uint64_t (*)(const K&);
    using GrowthFunction = uint32_t (*)(uint32_t capacity); // gives the new capacity
    using EqualFunction = bool (*)(const K&, const K&);

    // capacity: slots to begin with. growth: slots added each time, unless a growth function is
    // set. Grows before an insertion would make count + 1 exceed capacity x loadFactor.
    HashOf(uint32_t capacity, uint32_t growth, double loadFactor, HashFunction hash = nullptr,
           GrowthFunction growthFunction = nullptr, EqualFunction equal = nullptr)
        : m_growth(growth)
        , m_slots(capacity, nullptr)
        , m_hash(hash)
        , m_growthFunction(growthFunction)
        , m_equal(equal)
        , m_loadFactor(loadFactor)
    {
    }
    ~HashOf()
    {
        while (m_first)
            delete std::exchange(m_first, m_first->next);
    }
    HashOf(const HashOf&) = delete;
    HashOf& operator=(const HashOf&) = delete;

    uint32_t count() const { return m_count; }
    uint32_t capacity() const { return static_cast<uint32_t>(m_slots.size()); }
    // Head of the list of buckets, null when there is none.
    const Entry* first() const { return m_first; }
    Entry* first() { return m_first; }

    // The bucket of a key, or null.
    Entry* find(const K& key) const
    {
        Entry* const* slot = probe(key);
        return slot ? *slot : nullptr;
    }

    // Gives an existing key the new value or inserts the key.
    void setKey(const K& key, V value)
    {
        if (static_cast<double>(m_count) + 1 > static_cast<double>(capacity()) * m_loadFactor)
            grow();
        Entry** slot = probe(key);
        if (!slot)
            return;
        if (*slot) {
            (*slot)->value = std::move(value);
            return;
        }
        *slot = new Entry{key, std::move(value), m_first}; // owned by the list
        m_first = *slot;
        ++m_count;
    }

    // The value of a key, which is inserted with a default value when it is not there.
    // Throws LException when the insertion does not make the key findable.
    V& operator[](const K& key)
    {
        if (Entry* entry = find(key))
            return entry->value;
        setKey(key, V());
        if (Entry* entry = find(key))
            return entry->value;
        throw LException("myhash", 413, L"The value in hash table can't be created");
    }

private:
    uint64_t hashOf(const K& key) const
    {
        if (m_hash)
            return m_hash(key);
        uint64_t k = 0;
        if constexpr (std::is_pointer_v<K>)
            k = reinterpret_cast<uintptr_t>(key);
        else if constexpr (std::is_integral_v<K> || std::is_enum_v<K>)
            k = static_cast<uint64_t>(key);
        else
            k = std::hash<K>()(key);
        return k ^ (k >> 31);
    }
    bool isEqual(const K& a, const K& b) const { return m_equal ? m_equal(a, b) : a == b; }

    // The slot that holds the key or, without it, the first empty one; null when there is neither.
    Entry* const* probe(const K& key) const
    {
        const size_t n = m_slots.size();
        if (n == 0)
            return nullptr;
        size_t slot = hashOf(key) % n;
        for (size_t i = 0; i < n; ++i) {
            Entry* const& entry = m_slots[slot];
            if (!entry || isEqual(entry->key, key))
                return &entry;
            slot = slot + 1 == n ? 0 : slot + 1;
        }
        return nullptr;
    }
    Entry** probe(const K& key) { return const_cast<Entry**>(std::as_const(*this).probe(key)); }

    void grow()
    {
        const uint32_t now = capacity();
        const uint32_t room = std::numeric_limits<uint32_t>::max() - now;
        const uint32_t wanted =
            m_growthFunction ? m_growthFunction(now) : now + (m_growth < room ? m_growth : room);
        if (wanted <= now) // a table never shrinks below what it holds
            return;
        m_slots.assign(wanted, nullptr);
        for (Entry* entry = m_first; entry; entry = entry->next) {
            size_t slot = hashOf(entry->key) % wanted;
            while (m_slots[slot])
                slot = slot + 1 == wanted ? 0 : slot + 1;
            m_slots[slot] = entry;
        }
    }

    uint32_t m_count = 0;
    uint32_t m_growth;
    Entry* m_first = nullptr;
    std::vector<Entry*> m_slots;
    HashFunction m_hash;
    GrowthFunction m_growthFunction;
    EqualFunction m_equal;
    double m_loadFactor;
};
