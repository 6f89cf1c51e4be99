// A growable array with a capacity and a growth step of its own.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>

// Elements are made with their default constructor when the array is allocated, copied by
// assignment when it grows, and destroyed with it; remove and clear leave the places made. Indexes
// start at 0 and are not checked. A growth step of 0 counts as 1.
template<class T>
class VectorOf {
public:
    explicit VectorOf(uint32_t capacity = 50, uint32_t growth = 50)
        : m_items(capacity ? std::make_unique<T[]>(capacity) : nullptr)
        , m_capacity(capacity)
        , m_growth(growth ? growth : 1)
    {
    }
    VectorOf(const VectorOf& other)
        : VectorOf(other.m_capacity, other.m_growth)
    {
        for (uint32_t i = 0; i < other.m_count; ++i)
            m_items[i] = other.m_items[i];
        m_count = other.m_count;
    }
    VectorOf(VectorOf&& other) noexcept
        : m_items(std::move(other.m_items))
        , m_count(std::exchange(other.m_count, 0))
        , m_capacity(std::exchange(other.m_capacity, 0))
        , m_growth(other.m_growth)
    {
    }
    VectorOf& operator=(VectorOf other) noexcept
    {
        std::swap(m_items, other.m_items);
        std::swap(m_count, other.m_count);
        std::swap(m_capacity, other.m_capacity);
        std::swap(m_growth, other.m_growth);
        return *this;
    }

    uint32_t count() const { return m_count; }
    uint32_t capacity() const { return m_capacity; }
    uint32_t growth() const { return m_growth; }
    bool isEmpty() const { return m_count == 0; }

    T& operator[](uint32_t i) { return m_items[i]; }
    const T& operator[](uint32_t i) const { return m_items[i]; }
    T* begin() { return m_items.get(); }
    T* end() { return m_items.get() + m_count; }
    const T* begin() const { return m_items.get(); }
    const T* end() const { return m_items.get() + m_count; }

    void append(T value) { insert(m_count, std::move(value)); }
    // Puts the value before the element at index i; behind the last one when i is the count or
    // more.
    void insert(uint32_t i, T value)
    {
        if (m_count == m_capacity)
            grow();
        if (i > m_count)
            i = m_count;
        for (uint32_t k = m_count; k > i; --k)
            m_items[k] = std::move(m_items[k - 1]);
        m_items[i] = std::move(value);
        ++m_count;
    }
    // Takes the element at index i out and closes the gap; an index outside changes nothing.
    void remove(uint32_t i)
    {
        if (i >= m_count)
            return;
        for (uint32_t k = i + 1; k < m_count; ++k)
            m_items[k - 1] = std::move(m_items[k]);
        m_items[--m_count] = T();
    }
    void clear()
    {
        while (m_count != 0)
            m_items[--m_count] = T();
    }

private:
    void grow()
    {
        const uint32_t capacity = m_capacity + m_growth;
        auto items = std::make_unique<T[]>(capacity);
        for (uint32_t i = 0; i < m_count; ++i)
            items[i] = m_items[i];
        m_items = std::move(items);
        m_capacity = capacity;
    }

    std::unique_ptr<T[]> m_items;
    uint32_t m_count = 0;
    uint32_t m_capacity;
    uint32_t m_growth;
};
