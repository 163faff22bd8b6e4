#ifndef TARN_WOOD_SUPPORT_ROWS_H
#define TARN_WOOD_SUPPORT_ROWS_H

// The support of a right member as variable indices, in a plain vector,
// for the passes that compare it with an equation's dependances or spread
// it into reader lists without building a set.

#include <algorithm>
#include <vector>

#include "bdd/bddpp.h"

namespace wood_rows {

// The indices of the variables that f reads, ascending, into `out`; false
// (and `out` untouched) when f is not a node of `manager`, where only the
// manager's own set walk answers.
inline bool support_indexes(bddpp_manager* manager, const bdd& f, std::vector<long>& out)
{
    if (manager == nullptr || f.manager_ref() != manager || f.node() == nullptr) return false;
    out.clear();
    for (long id : f.node()->depends()) out.push_back(manager->index_of_id(id));
    // The ids come ascending, and so do their indexes while they are the ids.
    if (!manager->indexes_are_ids()) std::sort(out.begin(), out.end());
    return true;
}

// Whether the set holds exactly the members of the ascending vector.
template <class Set>
bool same_members(const Set& set, const std::vector<long>& members)
{
    return set.size() == members.size() && std::equal(members.begin(), members.end(), set.begin());
}

} // namespace wood_rows

#endif
