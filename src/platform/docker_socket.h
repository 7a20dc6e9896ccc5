#pragma once
// Where a Docker engine (or one that speaks its API) listens on this machine.
#include <optional>
#include <string>

namespace corvane::platform {

// The engine's Unix socket: the path of a unix:// DOCKER_HOST; without DOCKER_HOST, the first socket
// that exists of $XDG_RUNTIME_DIR/docker.sock, /var/run/docker.sock, on the Mac Docker Desktop's,
// Colima's and OrbStack's, then Podman's $XDG_RUNTIME_DIR/podman/podman.sock. Absent when DOCKER_HOST
// names something else or no socket exists.
std::optional<std::string> dockerEngineSocket();

// Whether a Docker engine answers on this machine even though none of its processes is the user's
// (on Linux the daemon usually runs as root): the socket of a unix:// DOCKER_HOST,
// $XDG_RUNTIME_DIR/docker.sock, or /var/run/docker.sock exists. Always false on the Mac, where the
// engines run as the user's own processes, which the snapshot sees.
bool dockerSocketExists();

}  // namespace corvane::platform
