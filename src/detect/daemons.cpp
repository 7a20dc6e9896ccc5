// The JVM build daemons: Kotlin compile daemons, then Gradle daemons.
#include <algorithm>
#include <string>

#include "detect/classifiers.h"

namespace corvane {

namespace {

constexpr std::string_view kotlinDaemonClass = "org.jetbrains.kotlin.daemon.KotlinCompileDaemon";
constexpr std::string_view gradleDaemonClass = "org.gradle.launcher.daemon.bootstrap.GradleDaemon";

}  // namespace

void addKotlinDaemons(Detection& d) {
  for (const Proc* p : d.all) {
    if (d.isClaimed(p->pid)) continue;
    if (std::find(p->args.begin(), p->args.end(), kotlinDaemonClass) == p->args.end()) continue;
    d.add(Item::Kind::kotlin, "kotlin:" + std::to_string(p->pid), "kotlin", "Kotlin daemon", p->pid, std::nullopt,
          Stop::signal(), Detection::Guard::none);
  }
}

void addGradleDaemons(Detection& d) {
  for (const Proc* p : d.all) {
    if (d.isClaimed(p->pid)) continue;
    const auto mainClass = std::find(p->args.begin(), p->args.end(), gradleDaemonClass);
    if (mainClass == p->args.end()) continue;
    // The daemon is handed its Gradle version right after its main class.
    const std::string version = mainClass + 1 == p->args.end() ? "" : " " + *(mainClass + 1);
    d.add(Item::Kind::gradle, "gradle:" + std::to_string(p->pid), "gradle" + version, "Gradle daemon" + version,
          p->pid, std::nullopt, Stop::signal(), Detection::Guard::none);
  }
}

}  // namespace corvane
