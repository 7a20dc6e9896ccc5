#include "platform/unix_http.h"

#include <curl/curl.h>
#include <dlfcn.h>

#include <memory>

namespace corvane::platform {

namespace {

// libcurl is loaded on first use, not linked: with the TLS, HTTP/2 and directory libraries it brings, it
// would cost every run of the program milliseconds at start-up, and most runs never talk to an engine.
struct Curl {
  CURL* (*easyInit)() = nullptr;
  CURLcode (*easySetopt)(CURL*, CURLoption, ...) = nullptr;
  CURLcode (*easyGetinfo)(CURL*, CURLINFO, ...) = nullptr;
  void (*easyCleanup)(CURL*) = nullptr;
  CURLM* (*multiInit)() = nullptr;
  CURLMcode (*multiAddHandle)(CURLM*, CURL*) = nullptr;
  CURLMcode (*multiRemoveHandle)(CURLM*, CURL*) = nullptr;
  CURLMcode (*multiPerform)(CURLM*, int*) = nullptr;
  CURLMcode (*multiPoll)(CURLM*, curl_waitfd[], unsigned int, int, int*) = nullptr;
  CURLMsg* (*multiInfoRead)(CURLM*, int*) = nullptr;
  CURLMcode (*multiCleanup)(CURLM*) = nullptr;
  CURLcode (*globalInit)(long) = nullptr;
};

#ifdef __APPLE__
constexpr const char* curlLibrary = "/usr/lib/libcurl.4.dylib";
#else
constexpr const char* curlLibrary = "libcurl.so.4";
#endif

template <typename Function>
bool bind(void* library, const char* name, Function& function) {
  function = reinterpret_cast<Function>(dlsym(library, name));
  return function != nullptr;
}

// Absent when the library or one of its functions is missing. Loaded once; never unloaded.
const Curl* curl() {
  static const std::unique_ptr<Curl> loaded = []() -> std::unique_ptr<Curl> {
    void* library = dlopen(curlLibrary, RTLD_NOW | RTLD_LOCAL);
    if (!library) return nullptr;
    auto c = std::make_unique<Curl>();
    const bool complete =
        bind(library, "curl_easy_init", c->easyInit) && bind(library, "curl_easy_setopt", c->easySetopt) &&
        bind(library, "curl_easy_getinfo", c->easyGetinfo) && bind(library, "curl_easy_cleanup", c->easyCleanup) &&
        bind(library, "curl_multi_init", c->multiInit) &&
        bind(library, "curl_multi_add_handle", c->multiAddHandle) &&
        bind(library, "curl_multi_remove_handle", c->multiRemoveHandle) &&
        bind(library, "curl_multi_perform", c->multiPerform) && bind(library, "curl_multi_poll", c->multiPoll) &&
        bind(library, "curl_multi_info_read", c->multiInfoRead) &&
        bind(library, "curl_multi_cleanup", c->multiCleanup) && bind(library, "curl_global_init", c->globalInit);
    if (!complete || c->globalInit(CURL_GLOBAL_DEFAULT) != CURLE_OK) return nullptr;
    return c;
  }();
  return loaded.get();
}

size_t append(char* bytes, size_t size, size_t count, void* body) {
  static_cast<std::string*>(body)->append(bytes, size * count);
  return size * count;
}

HttpAnswer::State stateOf(CURLcode code) {
  switch (code) {
    case CURLE_OK:
      return HttpAnswer::State::answered;
    case CURLE_COULDNT_CONNECT:
      return HttpAnswer::State::unreachable;
    case CURLE_OPERATION_TIMEDOUT:
      return HttpAnswer::State::timedOut;
    default:
      return HttpAnswer::State::failed;
  }
}

}  // namespace

std::vector<HttpAnswer> getOverUnixSocket(const std::string& socket, const std::vector<std::string>& paths,
                                          double timeoutSeconds) {
  std::vector<HttpAnswer> answers(paths.size());
  const Curl* c = curl();
  CURLM* multi = c ? c->multiInit() : nullptr;
  if (!multi) {
    for (auto& answer : answers) answer.state = HttpAnswer::State::unreachable;
    return answers;
  }
  std::vector<CURL*> handles;
  for (size_t i = 0; i < paths.size(); ++i) {
    CURL* handle = c->easyInit();
    if (!handle) continue;
    // The host is only a name for the request line: the socket decides where it goes.
    const std::string url = "http://localhost" + paths[i];
    c->easySetopt(handle, CURLOPT_URL, url.c_str());
    c->easySetopt(handle, CURLOPT_UNIX_SOCKET_PATH, socket.c_str());
    c->easySetopt(handle, CURLOPT_NOSIGNAL, 1L);
    c->easySetopt(handle, CURLOPT_TIMEOUT_MS, static_cast<long>(timeoutSeconds * 1000));
    c->easySetopt(handle, CURLOPT_WRITEFUNCTION, append);
    c->easySetopt(handle, CURLOPT_WRITEDATA, &answers[i].body);
    c->easySetopt(handle, CURLOPT_PRIVATE, &answers[i]);
    if (c->multiAddHandle(multi, handle) != CURLM_OK) {
      c->easyCleanup(handle);
      continue;
    }
    handles.push_back(handle);
  }
  int running = 0;
  do {
    if (c->multiPerform(multi, &running) != CURLM_OK) break;
    if (running > 0 && c->multiPoll(multi, nullptr, 0, 1000, nullptr) != CURLM_OK) break;
  } while (running > 0);
  int left = 0;
  while (const CURLMsg* message = c->multiInfoRead(multi, &left)) {
    if (message->msg != CURLMSG_DONE) continue;
    HttpAnswer* answer = nullptr;
    c->easyGetinfo(message->easy_handle, CURLINFO_PRIVATE, &answer);
    if (!answer) continue;
    answer->state = stateOf(message->data.result);
    if (answer->state == HttpAnswer::State::answered)
      c->easyGetinfo(message->easy_handle, CURLINFO_RESPONSE_CODE, &answer->status);
  }
  for (CURL* handle : handles) {
    c->multiRemoveHandle(multi, handle);
    c->easyCleanup(handle);
  }
  c->multiCleanup(multi);
  return answers;
}

}  // namespace corvane::platform
