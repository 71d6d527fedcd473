#include "host/studio/web_server.h"

#include <fcntl.h>
#include <httplib.h>
#include <netinet/tcp.h>
#include <poll.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <nlohmann/json.hpp>
#include <thread>

#include "host/base/errors.h"
#include "host/base/interruption.h"
#include "host/studio/web_gate.h"

namespace Nifikral {
namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr std::size_t mostThreads = 48;
constexpr int mostWaiting = 512;
constexpr std::size_t mostRequestBytes = mostBodyBytes + (64 << 10);
constexpr std::chrono::milliseconds requestTime = 10s, idleTime = 20s, writeTime = 30s, slice = 100ms;

// Takes no more connections than it can hold; those behind them wait in the system's own queue.
class BoundedPool final : public httplib::ThreadPool {
 public:
    BoundedPool() : ThreadPool(mostThreads) {}
    void enqueue(std::function<void()> work) override {
        std::unique_lock lock(m_mutex);
        m_room.wait(lock, [&] { return m_held < mostThreads + std::size_t(mostWaiting); });
        ++m_held;
        lock.unlock();
        ThreadPool::enqueue([this, work = std::move(work)] {
            work();
            const std::lock_guard done(m_mutex);
            --m_held;
            m_room.notify_one();
        });
    }

 private:
    std::mutex m_mutex;
    std::condition_variable m_room;
    std::size_t m_held = 0;
};

// A connection whose other side may be slow, but not for ever: a request has to be there within a time and a size.
class Connection final : public httplib::Stream {
 public:
    explicit Connection(int socket) : m_socket(socket) {}

    /// Waits for the next request. False: there is none.
    bool Wait() {
        m_left = mostRequestBytes;
        m_deadline = Clock::now() + idleTime;
        if (m_begin == m_end && !Fill()) return false;
        m_deadline = Clock::now() + requestTime;
        return true;
    }

    bool is_readable() const override { return m_begin < m_end || Poll(POLLIN, 0ms); }
    bool is_writable() const override { return !IsInterrupted() && Poll(POLLOUT, 0ms) && !IsClosed(); }
    ssize_t read(char* to, std::size_t size) override {
        if (m_begin == m_end && !Fill()) return -1;
        const std::size_t count = std::min({size, m_end - m_begin, m_left});
        if (count == 0 && size > 0) return -1;
        std::copy_n(m_bytes + m_begin, count, to);
        m_begin += count;
        m_left -= count;
        return ssize_t(count);
    }
    ssize_t write(const char* from, std::size_t size) override {
        const Clock::time_point end = Clock::now() + writeTime;
        while (!IsInterrupted() && Clock::now() < end) {
            if (!Poll(POLLOUT, slice)) continue;
            const ssize_t count = send(m_socket, from, size, MSG_NOSIGNAL | MSG_DONTWAIT);
            if (count >= 0 || (errno != EAGAIN && errno != EINTR)) return count;
        }
        return -1;
    }
    void get_remote_ip_and_port(std::string&, int&) const override {}
    void get_local_ip_and_port(std::string&, int&) const override {}
    socket_t socket() const override { return m_socket; }

 private:
    bool Poll(short events, std::chrono::milliseconds time) const {
        pollfd ready{m_socket, events, 0};
        return poll(&ready, 1, int(time.count())) > 0;
    }
    // Whether the other side has gone.
    bool IsClosed() const {
        char byte = 0;
        return recv(m_socket, &byte, 1, MSG_PEEK | MSG_DONTWAIT) == 0;
    }
    bool Fill() {
        while (!IsInterrupted() && Clock::now() < m_deadline) {
            if (!Poll(POLLIN, slice)) continue;
            const ssize_t count = recv(m_socket, m_bytes, sizeof m_bytes, MSG_DONTWAIT);
            if (count < 0 && (errno == EAGAIN || errno == EINTR)) continue;
            m_begin = 0;
            m_end = std::size_t(std::max<ssize_t>(count, 0));
            return count > 0;
        }
        return false;
    }

    int m_socket;
    char m_bytes[16 << 10];
    std::size_t m_begin = 0, m_end = 0, m_left = 0;
    Clock::time_point m_deadline;
};

class Listener final : public httplib::Server {
 public:
    // The library's own queue is too short for a page that asks for everything at once.
    void HoldWaiting() const { ::listen(svr_sock_, mostWaiting); }

 private:
    bool process_and_close_socket(socket_t socket) override {
        const int on = 1;
        setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        // Programs that are started meanwhile are not to hold it open.
        fcntl(socket, F_SETFD, FD_CLOEXEC);
        {
            Connection connection(socket);
            bool closes = false, good = true;
            while (good && !closes && connection.Wait())
                good = process_request(connection, false, closes, [](httplib::Request&) {});
        }
        shutdown(socket, SHUT_RDWR);
        close(socket);
        return true;
    }
};

const httplib::Headers usualHeaders = {
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' blob: data:; connect-src 'self'; "
     "font-src "
     "'self'; media-src 'self' blob:; base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
    {"X-Content-Type-Options", "nosniff"},
    {"X-Frame-Options", "DENY"},
    {"Referrer-Policy", "no-referrer"},
    {"Cross-Origin-Opener-Policy", "same-origin"},
    {"Cross-Origin-Resource-Policy", "same-origin"}};

WebReply ErrorReply(int status, const std::string& line, bool superseded = false) {
    nlohmann::ordered_json json = {{"error", line}};
    if (superseded) json["superseded"] = true;
    return {status, "application/json", json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)};
}

WebReply HandledBy(const WebServer::Handler& handler, const WebRequest& request) {
    try {
        return handler(request);
    } catch (const Superseded& error) {
        return ErrorReply(error.Status(), error.what(), true);
    } catch (const WebError& error) {
        return ErrorReply(error.Status(), error.what());
    } catch (const HostError& error) {
        constexpr int refused = 400, unreadable = 422, unwritable = 507, ends = 503, failed = 500;
        const ExitCode code = error.Code();
        return ErrorReply(code == ExitCode::Usage         ? refused
                          : code == ExitCode::Input       ? unreadable
                          : code == ExitCode::Output      ? unwritable
                          : code == ExitCode::Interrupted ? ends
                                                          : failed,
                          error.what());
    } catch (const std::bad_alloc&) {
        return ErrorReply(500, "out of memory; use smaller pictures");
    } catch (const std::exception& error) {
        return ErrorReply(500, error.what());
    }
}

// A body of known length is sent as it is; others would be packed, which takes longer than sending them.
void Send(WebReply reply, httplib::Response& response) {
    response.status = reply.status;
    bool cached = false;
    for (const auto& [name, value] : reply.headers) {
        response.set_header(name, value);
        cached = cached || name == "Cache-Control";
    }
    if (!cached) response.set_header("Cache-Control", "no-store");
    if (reply.stream) {
        response.set_chunked_content_provider(reply.type,
                                              [stream = std::move(reply.stream)](std::size_t, httplib::DataSink& sink) {
                                                  const auto send = [&](std::string_view bytes) {
                                                      return !IsInterrupted() && sink.write(bytes.data(), bytes.size());
                                                  };
                                                  try {
                                                      if (!stream(send)) sink.done();
                                                      return !IsInterrupted();
                                                  } catch (const std::exception&) {
                                                      return false;
                                                  }
                                              });
    } else if (!reply.body.empty()) {
        const auto body = std::make_shared<const std::string>(std::move(reply.body));
        response.set_content_provider(body->size(), reply.type,
                                      [body](std::size_t begin, std::size_t size, httplib::DataSink& sink) {
                                          return sink.write(body->data() + begin, size);
                                      });
    }
}

}  // namespace

struct WebServer::Parts {
    Handler handler;
    Listener listener;
    std::unique_ptr<WebGate> gate;
    std::string address;

    // The path within the studio, or nothing.
    bool Admits(const httplib::Request& request, std::string& path) const {
        std::multimap<std::string, std::string> headers;
        for (const auto& [name, value] : request.headers) headers.emplace(Small(name), value);
        path = request.path;
        return gate->Admits(path, headers);
    }
    static std::string Small(std::string text) {
        for (char& letter : text) letter = char(std::tolower(static_cast<unsigned char>(letter)));
        return text;
    }
    void Handle(const httplib::Request& from, httplib::Response& response) const {
        WebRequest request;
        Admits(from, request.path);
        request.method = from.method;
        request.body = from.body;
        for (const auto& [name, value] : from.headers) request.headers.emplace(Small(name), value);
        for (const auto& [name, value] : from.params) request.query.emplace(name, value);
        Send(HandledBy(handler, request), response);
    }
};

WebServer::WebServer(int port, Handler handler) : m_parts(std::make_unique<Parts>()) {
    m_parts->handler = std::move(handler);
    Listener& listener = m_parts->listener;
    listener.new_task_queue = [] { return new BoundedPool; };
    listener.set_payload_max_length(mostBodyBytes);
    listener.set_keep_alive_timeout(std::chrono::duration_cast<std::chrono::seconds>(idleTime).count());
    listener.set_keep_alive_max_count(1000);
    listener.set_default_headers(usualHeaders);
    // Before the body is read.
    listener.set_pre_routing_handler([this](const httplib::Request& request, httplib::Response& response) {
        std::string path;
        constexpr std::size_t longestPath = 2048;
        if (request.path.size() < longestPath && m_parts->Admits(request, path))
            return httplib::Server::HandlerResponse::Unhandled;
        Send(ErrorReply(403, "this address is not the studio's; open the one that nifikral studio has printed"),
             response);
        response.set_header("Connection", "close");
        return httplib::Server::HandlerResponse::Handled;
    });
    const auto handle = [this](const httplib::Request& request, httplib::Response& response) {
        m_parts->Handle(request, response);
    };
    constexpr char anyPath[] = R"([\s\S]*)";
    listener.Get(anyPath, handle).Post(anyPath, handle).Put(anyPath, handle).Delete(anyPath, handle);
    constexpr char loopback[] = "127.0.0.1";
    if (port == 0)
        port = listener.bind_to_any_port(loopback);
    else if (!listener.bind_to_port(loopback, port))
        port = -1;
    if (port < 0)
        throw HostError(ExitCode::Output,
                        "the port is in use by another program or not allowed; give --port another "
                        "number, or 0 for any that is free");
    listener.HoldWaiting();
    m_parts->gate = std::make_unique<WebGate>(port);
    m_parts->address = m_parts->gate->Address();
}

WebServer::~WebServer() = default;

const std::string& WebServer::Address() const { return m_parts->address; }

void WebServer::Run() {
    std::thread serving([this] { m_parts->listener.listen_after_bind(); });
    while (!IsInterrupted()) std::this_thread::sleep_for(slice);
    m_parts->listener.stop();
    serving.join();
}

}  // namespace Nifikral
