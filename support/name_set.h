// A set of names asked about once per equation by the writers: whether a
// variable is an output, whether the process publishes it. Most questions
// are about names that are not in the set, so a question reads one slot
// of a flat table of hashes and compares texts only when the hash agrees.

#ifndef TARN_SUPPORT_NAME_SET_H
#define TARN_SUPPORT_NAME_SET_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

class name_set {
public:
    name_set() : slots(16) {}

    // False when the name was there already.
    bool insert(std::string_view name)
    {
        const std::uint64_t h = hash_of(name);
        std::size_t i = find(name, h);
        if (slots[i].hash != 0)
            return false;
        if (2 * (names.size() + 1) > slots.size()) {
            grow();
            i = find(name, h);
        }
        slots[i].hash = h;
        slots[i].name = static_cast<std::uint32_t>(names.size());
        names.emplace_back(name);
        return true;
    }
    std::size_t count(std::string_view name) const { return slots[find(name, hash_of(name))].hash != 0 ? 1 : 0; }
    std::size_t size() const { return names.size(); }
    bool empty() const { return names.empty(); }

private:
    struct slot {
        std::uint64_t hash = 0; // 0: free
        std::uint32_t name = 0; // place in names
    };

    // FNV-1a over the bytes, mixed; never 0.
    static std::uint64_t hash_of(std::string_view s)
    {
        std::uint64_t h = 0xcbf29ce484222325ULL;
        for (unsigned char c : s)
            h = (h ^ c) * 0x100000001b3ULL;
        h ^= h >> 29;
        return h == 0 ? 1 : h;
    }
    // The slot of the name, or the free slot where it would go.
    std::size_t find(std::string_view name, std::uint64_t h) const
    {
        const std::size_t mask = slots.size() - 1;
        for (std::size_t i = static_cast<std::size_t>(h) & mask;; i = (i + 1) & mask) {
            const slot& s = slots[i];
            if (s.hash == 0 || (s.hash == h && names[s.name] == name))
                return i;
        }
    }
    void grow()
    {
        std::vector<slot> old(slots.size() * 2);
        old.swap(slots);
        const std::size_t mask = slots.size() - 1;
        for (const slot& s : old) {
            if (s.hash == 0)
                continue;
            std::size_t i = static_cast<std::size_t>(s.hash) & mask;
            while (slots[i].hash != 0)
                i = (i + 1) & mask;
            slots[i] = s;
        }
    }

    std::vector<slot> slots; // a power of two, at most half full
    std::vector<std::string> names;
};

#endif
