#pragma once
// A list with lower bound 0 whose element 0 is present and unused: entries are 1..ubound(),
// the upper bound is the count, and a bad index raises "Subscript out of range" where the
// server's routines expect it to.
#include "basics/RuntimeError.h"

#include <vector>

template <typename T> class VbList {
  public:
    VbList() : items_(1) {}
    // A list with bounds 0..upper, every element default-valued (a "ReDim").
    static VbList withUpperBound(long upper) {
        if (upper < 0) throw errors::subscriptOutOfRange();
        VbList list;
        list.items_.resize(static_cast<size_t>(upper) + 1);
        return list;
    }

    int ubound() const { return static_cast<int>(items_.size()) - 1; }
    T& operator[](long i) { return items_[checked(i)]; }
    const T& operator[](long i) const { return items_[checked(i)]; }

    // The entry at i, or none: for lookups a peer can aim anywhere, which fail without
    // unwinding (the caller raises "Subscript out of range" into its trap).
    T* find(long i) {
        return i >= 0 && i < static_cast<long>(items_.size()) ? &items_[static_cast<size_t>(i)] : nullptr;
    }
    const T* find(long i) const {
        return i >= 0 && i < static_cast<long>(items_.size()) ? &items_[static_cast<size_t>(i)] : nullptr;
    }

    // Grows by one at the end, keeping the contents; returns the new last element.
    T& append(T value = T{}) {
        items_.push_back(std::move(value));
        return items_.back();
    }
    void reset() { items_.assign(1, T{}); }

    // Rebuilds the list without the entries that match, later ones moving down, and returns the
    // position the last match had (0 when none matched).
    template <typename Predicate> int removeWhere(Predicate matches) {
        int lastRemoved = 0;
        std::vector<T> kept;
        kept.reserve(items_.size());
        kept.push_back(std::move(items_[0]));
        for (size_t i = 1; i < items_.size(); ++i) {
            if (matches(items_[i]))
                lastRemoved = static_cast<int>(i);
            else
                kept.push_back(std::move(items_[i]));
        }
        items_ = std::move(kept);
        return lastRemoved;
    }

  private:
    size_t checked(long i) const {
        if (i < 0 || i >= static_cast<long>(items_.size())) throw errors::subscriptOutOfRange();
        return static_cast<size_t>(i);
    }
    std::vector<T> items_;
};
