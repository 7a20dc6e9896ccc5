#pragma once
// How the desktop app brings back a row that was stopped.
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include <nlohmann/json.hpp>

#include "detect/item.h"
#include "base/decoded.h"

namespace corvane {

struct Tools;

struct Undo {
  struct Boot {  // boot the simulator device again
    std::string udid;
    bool operator==(const Boot&) const = default;
  };
  struct Avd {  // relaunch the emulator by its AVD name
    std::string name;
    bool operator==(const Avd&) const = default;
  };
  struct Start {  // start these containers again
    std::vector<std::string> ids;
    bool operator==(const Start&) const = default;
  };

  std::variant<Boot, Avd, Start> action;

  static Undo boot(std::string udid) { return {Boot{std::move(udid)}}; }
  static Undo avd(std::string name) { return {Avd{std::move(name)}}; }
  static Undo start(std::vector<std::string> ids) { return {Start{std::move(ids)}}; }

  template <class T>
  const T* as() const { return std::get_if<T>(&action); }

  // Brings back what the record names, for the desktop app's undo; true when that worked.
  bool perform(const Tools& tools) const;

  bool operator==(const Undo&) const = default;
};

// What undoes stopping `item`: a simulator that isn't a previews device is booted again, an emulator whose
// key is "avd:NAME" is relaunched as NAME, containers are started again; nothing for the rest.
std::optional<Undo> undoFor(const Item& item);

// {"boot": {"udid": U}}, {"avd": {"_0": NAME}}, {"start": {"_0": [IDS]}}.
nlohmann::json toJSON(const Undo& undo);
// Fails with "Invalid number of keys found, expected one." unless the object has exactly one key.
Decoded<Undo> decodeUndo(const nlohmann::json& json);

}  // namespace corvane
