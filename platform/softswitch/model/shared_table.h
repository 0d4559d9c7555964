/* A table of the model that copies of the model share until one of them changes it. It makes a copy of the
 * whole model a matter of a few pointers, which is what the switch rests on: a change is tried on a copy that
 * is dropped when a rule refuses it, and the data plane and the printing of the configuration work on a copy
 * without holding the lock.
 *
 * Copying and editing happen under the switch's lock; a copy can then be read without it. */
#ifndef KESTREL_SOFTSWITCH_MODEL_SHARED_TABLE_H
#define KESTREL_SOFTSWITCH_MODEL_SHARED_TABLE_H

#include <memory>

namespace softswitch {

template <typename T> class shared_table {
public:
  shared_table() : table(std::make_shared<T>()) {}
  shared_table(const shared_table &other) : table(other.table), shared(true) { other.shared = true; }
  shared_table &operator=(const shared_table &other) {
    if (this == &other) return *this;
    other.shared = true;
    shared = true;
    table = other.table;
    return *this;
  }

  const T *operator->() const { return table.get(); }
  const T &operator*() const { return *table; }

  /* Whether both hold the same table, which is more than an equal one: neither has changed it since it was
   * copied from the other. */
  bool operator==(const shared_table &other) const { return table == other.table; }

  /* The table for changing: its own from now on. */
  T *edit() {
    if (shared) table = std::make_shared<T>(*table);
    shared = false;
    return table.get();
  }

private:
  std::shared_ptr<T> table;
  mutable bool shared = false; /* another copy may hold the same table */
};

} // namespace softswitch

#endif
