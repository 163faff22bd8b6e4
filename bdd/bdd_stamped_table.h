#ifndef TARN_BDD_BDD_STAMPED_TABLE_H
#define TARN_BDD_BDD_STAMPED_TABLE_H

// A scratch table of a walk over nodes: open addressing on a power-of-two
// vector at most half full, kept from walk to walk and emptied in one step
// by a new generation number (a slot of an older generation is free).
// `Hash` gives a key's home before masking.

#include <cstddef>
#include <vector>

template <class Key, class Value, class Hash>
class stamped_table {
public:
    // Empties the table.
    void start()
    {
        if (++generation == 0) {
            for (entry& e : slots) e.generation = 0;
            generation = 1;
        }
        used = 0;
        if (slots.empty()) slots.resize(64);
    }
    const Value* find(const Key& key) const
    {
        const std::size_t mask = slots.size() - 1;
        for (std::size_t i = Hash()(key) & mask;; i = (i + 1) & mask) {
            const entry& e = slots[i];
            if (e.generation != generation) return nullptr;
            if (e.key == key) return &e.value;
        }
    }
    // Enters the key with its value unless it is there; whether it was not.
    bool insert(const Key& key, const Value& value)
    {
        if (2 * (used + 1) > slots.size()) grow();
        if (!place(key, value)) return false;
        ++used;
        return true;
    }

private:
    struct entry {
        Key key;
        Value value;
        unsigned generation = 0;
    };
    bool place(const Key& key, const Value& value)
    {
        const std::size_t mask = slots.size() - 1;
        for (std::size_t i = Hash()(key) & mask;; i = (i + 1) & mask) {
            entry& e = slots[i];
            if (e.generation != generation) {
                e = entry{key, value, generation};
                return true;
            }
            if (e.key == key) return false;
        }
    }
    void grow()
    {
        std::vector<entry> old;
        old.swap(slots);
        slots.resize(old.size() * 2);
        for (const entry& e : old)
            if (e.generation == generation) place(e.key, e.value);
    }
    std::vector<entry> slots;
    unsigned generation = 0;
    std::size_t used = 0;
};

#endif
