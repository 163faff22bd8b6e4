#ifndef TARN_SIGNALS_WOOD_MAP_H
#define TARN_SIGNALS_WOOD_MAP_H

#include <map>
#include <memory>

class Bddexpressionwood;

// A value per wood, for the per-signal and per-ref tables. Nearly every
// signal lives in one wood only: the first wood entered is held inline, the
// others in a map made on demand.
template <class V>
class WoodMap {
public:
    using Value = V;

    // Null when the wood has no entry.
    const V* find(Bddexpressionwood* wood) const
    {
        if (has_first && wood == first_wood)
            return &first;
        if (others == nullptr)
            return nullptr;
        auto it = others->find(wood);
        return it == others->end() ? nullptr : &it->second;
    }
    V* find(Bddexpressionwood* wood) { return const_cast<V*>(static_cast<const WoodMap*>(this)->find(wood)); }
    bool count(Bddexpressionwood* wood) const { return find(wood) != nullptr; }
    bool empty() const { return !has_first && (others == nullptr || others->empty()); }

    // False, and nothing changed, when the wood has an entry already.
    bool insert(Bddexpressionwood* wood, V value)
    {
        if (find(wood) != nullptr)
            return false;
        if (!has_first) {
            has_first = true;
            first_wood = wood;
            first = value;
            return true;
        }
        if (others == nullptr)
            others = std::make_unique<std::map<Bddexpressionwood*, V>>();
        others->emplace(wood, value);
        return true;
    }
    // The wood's entry, made value-initialised (0 for a number) when absent.
    V& operator[](Bddexpressionwood* wood)
    {
        if (V* v = find(wood))
            return *v;
        insert(wood, V{});
        return *find(wood);
    }
    void erase(Bddexpressionwood* wood)
    {
        if (has_first && wood == first_wood)
            has_first = false;
        else if (others != nullptr)
            others->erase(wood);
    }

private:
    Bddexpressionwood* first_wood = nullptr;
    V first{};
    bool has_first = false;
    std::unique_ptr<std::map<Bddexpressionwood*, V>> others;
};

#endif
