#pragma once
// Whether a Docker engine answers on this machine even though none of its processes is the user's
// (on Linux the daemon usually runs as root).
namespace corvane::platform {

// On Linux: the socket of a unix:// DOCKER_HOST, $XDG_RUNTIME_DIR/docker.sock, or /var/run/docker.sock
// exists. Always false where the engine's processes are the user's own.
bool dockerSocketExists();

}  // namespace corvane::platform
