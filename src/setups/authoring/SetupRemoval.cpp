#include "setups/authoring/SetupRemoval.h"

#include "setups/SetupCatalogue.h"

void removeSetup(SetupCatalogue& setups, int n) {
    VbList<SetupRecord>& list = setups.editableList();
    const int count = list.ubound();
    if (count == 0) return;
    // Every setup but n copied into a list one shorter: a number that names no setup copies
    // one too many and fails on the last copy, before the catalogue is touched.
    VbList<SetupRecord> kept = VbList<SetupRecord>::withUpperBound(count - 1);
    for (int i = 1, j = 1; i <= count; ++i)
        if (i != n) kept[j++] = list[i];
    list = std::move(kept);
    setups.commit();
}
