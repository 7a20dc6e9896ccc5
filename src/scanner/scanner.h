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
#include "snapshot/reader.h"
#include "tools/tools.h"

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

// The rows as `stop` and `free` act on them: two scans 2 seconds apart, so that CPU use, builds and
// idleness describe the last 2 seconds rather than a process's whole life.
std::vector<Item> settledScan(Scanner& scanner);

// The name the user gave an iOS simulator device, from the device's own directory.
// `path` lies inside the device's directory, which is named by `udid`; the name is the "name" entry
// of that directory's device.plist (binary or XML). Absent on any failure.
std::optional<std::string> simulatorName(const std::string& path, const std::string& udid);

}  // namespace corvane
