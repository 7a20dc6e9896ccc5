#include "snapshot/proc.h"

#include "base/json_fields.h"

namespace corvane {

using nlohmann::json;

std::string_view lastPathComponent(std::string_view path) {
  const auto slash = path.rfind('/');
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

StartTimes startTimes(const Snapshot& snapshot) {
  StartTimes times;
  times.reserve(snapshot.procs.size());
  for (const Proc& proc : snapshot.procs) times.emplace(proc.pid, proc.started);
  return times;
}

json toJSON(const Proc& p) {
  json j = {{"pid", p.pid},
            {"ppid", p.ppid},
            {"path", p.path},
            {"args", p.args},
            {"cwd", p.cwd},
            {"footprint", p.footprint},
            {"cpu", p.cpuTimeNanoseconds},
            {"started", iso8601(p.started)},
            {"listening", p.listening},
            {"inbound", p.inbound},
            {"name", p.name}};
  if (p.responsible) j["responsible"] = *p.responsible;
  return j;
}

json toJSON(const Snapshot& s) {
  json procs = json::array();
  for (const auto& p : s.procs) procs.push_back(toJSON(p));
  return {{"procs", std::move(procs)}, {"taken", iso8601(s.taken)}};
}

Decoded<Proc> decodeProc(const json& j) {
  JSONFields f(j, "Proc");
  Proc p;
  p.pid = f.int32("pid");
  p.ppid = f.int32("ppid");
  p.path = f.string("path");
  p.args = f.strings("args");
  p.cwd = f.string("cwd");
  p.footprint = f.uint64("footprint");
  p.cpuTimeNanoseconds = f.uint64("cpu");
  p.started = f.date("started");
  p.listening = f.ports("listening");
  p.inbound = f.int64("inbound");
  p.responsible = f.optionalInt32("responsible");
  p.name = f.string("name");
  if (!f.ok()) return Decoded<Proc>::failure(f.error());
  return Decoded<Proc>::success(std::move(p));
}

Decoded<Snapshot> decodeSnapshot(const json& j) {
  JSONFields f(j, "Snapshot");
  Snapshot s;
  s.taken = f.date("taken");
  const json* procs = f.member("procs");
  if (procs && !procs->is_array()) f.fail("Snapshot: \"procs\" must be an array.");
  if (!f.ok()) return Decoded<Snapshot>::failure(f.error());
  for (size_t i = 0; i < procs->size(); ++i) {
    auto p = decodeProc((*procs)[i]);
    if (!p) return Decoded<Snapshot>::failure("Snapshot: process " + std::to_string(i) + ": " + p.error);
    s.procs.push_back(std::move(*p.value));
  }
  return Decoded<Snapshot>::success(std::move(s));
}

}  // namespace corvane
