#ifndef TARN_SIGNALS_SIGNAL_NAME_INDEX_H
#define TARN_SIGNALS_SIGNAL_NAME_INDEX_H

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

// Objects by a name that each one holds and never changes while indexed.
// Open addressing with the hashes kept beside the pointers: a look-up reads
// one slot row, and an object's name only when the hashes agree; the names
// are not copied. Each name is present at most once. Iteration order is the
// slots' and means nothing.
template <class T, const std::string& (T::*Name)() const>
class NameIndex {
public:
    T* find(std::string_view name) const
    {
        if (used == 0)
            return nullptr;
        std::size_t h = hash(name);
        for (std::size_t i = h & mask;; i = (i + 1) & mask) {
            const Slot& s = slots[i];
            if (s.item == nullptr)
                return nullptr;
            if (s.hash == h && (s.item->*Name)() == name)
                return s.item;
        }
    }
    // Starts the read of the slot where a look-up of the name begins.
    void prefetch(std::string_view name) const
    {
        if (used != 0)
            __builtin_prefetch(&slots[hash(name) & mask]);
    }
    // The object already indexed under the item's name, else null after
    // entering the item.
    T* insert(T* item) { return put(item, false); }
    // Enters the item in place of any object of the same name.
    void assign(T* item) { put(item, true); }
    // Room for `count` names without growing.
    void reserve(std::size_t count)
    {
        std::size_t want = 16;
        while (3 * want < 4 * count)
            want *= 2;
        if (want > slots.size())
            rehash(want);
    }
    std::size_t size() const { return used; }
    bool empty() const { return used == 0; }
    void release()
    {
        std::vector<Slot>().swap(slots);
        used = 0;
        mask = 0;
    }
    template <class F> void for_each(F f) const
    {
        for (const Slot& s : slots)
            if (s.item != nullptr)
                f(s.item);
    }

private:
    struct Slot {
        std::size_t hash;
        T* item;
    };
    static std::size_t hash(std::string_view name) { return std::hash<std::string_view>()(name); }

    T* put(T* item, bool replace)
    {
        // At most three quarters full: the hashes beside the pointers keep
        // a longer run of slots cheap to pass.
        if (4 * (used + 1) > 3 * slots.size())
            rehash(slots.empty() ? 16 : 2 * slots.size());
        const std::string& name = (item->*Name)();
        std::size_t h = hash(name);
        for (std::size_t i = h & mask;; i = (i + 1) & mask) {
            Slot& s = slots[i];
            if (s.item == nullptr) {
                s.hash = h;
                s.item = item;
                used++;
                return nullptr;
            }
            if (s.hash == h && (s.item->*Name)() == name) {
                T* there = s.item;
                if (replace)
                    s.item = item;
                return there;
            }
        }
    }
    void rehash(std::size_t count)
    {
        std::vector<Slot> old(count, Slot{0, nullptr});
        old.swap(slots);
        mask = count - 1;
        for (const Slot& s : old) {
            if (s.item == nullptr)
                continue;
            std::size_t i = s.hash & mask;
            while (slots[i].item != nullptr)
                i = (i + 1) & mask;
            slots[i] = s;
        }
    }

    std::vector<Slot> slots;
    std::size_t used = 0;
    std::size_t mask = 0;
};

#endif
