// Local database servers, each one row with the workers it forked.
#include <string>

#include "detect/classifiers.h"
#include "detect/tables.h"

namespace corvane {

void addDatabases(Detection& d) {
  for (const Proc* p : d.all) {
    if (d.isClaimed(p->pid)) continue;
    const auto title = lookup(databaseNames, p->name);
    if (!title) continue;
    // postgres forks a process per connection; the server's row owns them.
    const Proc* parent = d.proc(p->ppid);
    if (parent && parent->name == p->name) continue;
    d.add(Item::Kind::database, "db:" + std::to_string(p->pid), "db:" + p->name, std::string(*title), p->pid,
          std::nullopt, Stop::signal(), Detection::Guard::guarded);
  }
}

}  // namespace corvane
