#include "scanner/scanner.h"

#include <chrono>
#include <filesystem>
#include <system_error>
#include <thread>

#include "detect/classifiers.h"
#include "detect/pipeline.h"
#include "platform/docker_socket.h"
#include "platform/paths.h"
#include "platform/property_list.h"
#include "scanner/containers.h"

namespace corvane {

namespace {

constexpr double containerRefreshSeconds = 10;

}  // namespace

bool dockerEngineRunning(const Snapshot& snapshot) {
  for (const auto& p : snapshot.procs)
    if (dockerEngineName(p)) return true;
  return platform::dockerSocketExists();
}

Scanner::Scanner(Tools tools, SnapshotSource source) : tools_(std::move(tools)), source_(std::move(source)) {}

Scanner::~Scanner() = default;

std::vector<Item> Scanner::scan() {
  std::lock_guard<std::mutex> lock(scanMutex_);
  Snapshot snap = source_(argsCache_);
  startTimes_ = corvane::startTimes(snap);
  refreshContainers(snap);
  learnSimulatorNames(snap);

  World world;
  world.simulators = simulatorNames_;
  {
    std::lock_guard<std::mutex> state(containerState_->mutex);
    world.containers = containerState_->containers;
  }
  Date taken = snap.taken;
  world.snapshot = std::move(snap);
  std::vector<Item> items = detect(world);

  for (auto& item : items)
    if (!item.project && item.cwd) item.project = cachedProjectName(*item.cwd);
  return tracker_.update(std::move(items), taken);
}

void Scanner::refreshContainers(const Snapshot& snapshot) {
  if (!dockerEngineRunning(snapshot)) {
    std::lock_guard<std::mutex> state(containerState_->mutex);
    containerState_->containers.clear();
    return;
  }
  {
    std::lock_guard<std::mutex> state(containerState_->mutex);
    if (containerState_->refreshing) return;
    if (containersAt_ && secondsBetween(*containersAt_, snapshot.taken) <= containerRefreshSeconds) return;
    containerState_->refreshing = true;
  }
  bool first = !containersAt_;
  containersAt_ = snapshot.taken;

  auto fetch = [state = containerState_, tools = tools_] {
    auto containers = runningContainers(tools);
    std::lock_guard<std::mutex> lock(state->mutex);
    state->containers = std::move(containers);
    state->refreshing = false;
  };
  // The first list is worth waiting for; later ones arrive for the next scan, so Docker's slow
  // commands never hold a scan up again.
  if (first) {
    fetch();
    return;
  }
  try {
    std::thread(fetch).detach();
  } catch (const std::system_error&) {
    // No thread to be had (the user's process limit): try again at a later scan.
    std::lock_guard<std::mutex> state(containerState_->mutex);
    containerState_->refreshing = false;
  }
}

void Scanner::learnSimulatorNames(const Snapshot& snapshot) {
  for (const auto& p : snapshot.procs) {
    if (p.name != "launchd_sim" || p.args.size() < 2) continue;
    auto udid = simulatorUDID(p.args[1]);
    if (!udid || simulatorNames_.count(*udid)) continue;
    if (auto name = simulatorName(p.args[1], *udid)) simulatorNames_[*udid] = *name;
  }
}

StartTimes Scanner::startTimes() {
  std::lock_guard<std::mutex> lock(scanMutex_);
  return startTimes_;
}

std::optional<std::string> Scanner::projectName(const std::string& cwd) {
  std::lock_guard<std::mutex> lock(scanMutex_);
  return cachedProjectName(cwd);
}

std::optional<std::string> Scanner::cachedProjectName(const std::string& cwd) {
  if (auto cached = projects_.find(cwd); cached != projects_.end()) return cached->second;
  const std::string& home = platform::homeDirectory();
  std::optional<std::string> result;
  if (cwd != "/" && cwd != home) {
    namespace fs = std::filesystem;
    fs::path dir(cwd);
    result = dir.filename().string();
    for (fs::path current = dir; current.string() != home && current != current.root_path() && !current.empty();
         current = current.parent_path()) {
      std::error_code ignored;
      if (fs::exists(current / ".git", ignored)) {
        result = current.filename().string();
        break;
      }
    }
  }
  projects_[cwd] = result;
  return result;
}

std::vector<Item> settledScan(Scanner& scanner) {
  scanner.scan();
  // sleep_for measures on the steady clock, so a change of the wall clock can't stretch the pause.
  std::this_thread::sleep_for(std::chrono::seconds(2));
  return scanner.scan();
}

std::optional<std::string> simulatorName(const std::string& path, const std::string& udid) {
  const std::string marker = "/" + udid + "/";
  const size_t at = path.find(marker);
  if (at == std::string::npos) return std::nullopt;
  return platform::plistStringValue(path.substr(0, at + marker.size()) + "device.plist", "name");
}

}  // namespace corvane
