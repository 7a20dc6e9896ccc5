#pragma once
// The one object with state: turns what runs now into rows, caching what is slow to learn.
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "detect/item.h"
#include "scanner/tracker.h"
#include "tools/tools.h"
#include "snapshot/reader.h"

namespace corvane {

class Scanner {
 public:
  using SnapshotSource = std::function<Snapshot(ArgsCache&)>;

  explicit Scanner(Tools tools, SnapshotSource source = snapshot);
  ~Scanner();
  Scanner(const Scanner&) = delete;
  Scanner& operator=(const Scanner&) = delete;

  // One full scan: snapshot, containers, simulator names, detection, projects, idle tracking.
  std::vector<Item> scan();

  // The nearest repository directory's name at or above `cwd` (below home), else the directory's own name.
  std::optional<std::string> projectName(const std::string& cwd);

  const Tools& tools() const { return tools_; }

  // When each process of the last scan started: what a stop of its rows signals, and nothing else.
  StartTimes startTimes();

 private:
  // Shared with the background refresh, which may outlive a scan (never the process).
  struct ContainerState {
    std::mutex mutex;
    std::vector<Container> containers;
    bool refreshing = false;
  };

  void refreshContainers(const Snapshot& snapshot);
  void learnSimulatorNames(const Snapshot& snapshot);
  std::optional<std::string> cachedProjectName(const std::string& cwd);  // with scanMutex_ held

  std::mutex scanMutex_;  // scans run one at a time, like calls on an actor
  const Tools tools_;
  const SnapshotSource source_;
  ArgsCache argsCache_;
  StartTimes startTimes_;
  Tracker tracker_;
  std::map<std::string, std::optional<std::string>> projects_;
  std::map<std::string, std::string> simulatorNames_;
  std::optional<Date> containersAt_;  // absent until the first refresh
  std::shared_ptr<ContainerState> containerState_ = std::make_shared<ContainerState>();
};

// A Docker engine runs: an engine process in the snapshot, or (on Linux) a Docker socket.
bool dockerEngineRunning(const Snapshot& snapshot);

}  // namespace corvane
