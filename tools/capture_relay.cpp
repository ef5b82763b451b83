#include "capture_relay.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <stdio.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <list>
#include <thread>
#include <vector>

#include "framing.h"
#include "pcapng.h"

namespace velard_capture {

namespace {

namespace vp = velard_pcapng;

void Log(const std::string& line) {
    std::string s = "velard-host: capture: " + line + "\n";
    ssize_t ignored = write(STDERR_FILENO, s.data(), s.size());
    (void)ignored;
}

std::string Errno(const char* what) {
    return std::string(what) + ": " + strerror(errno);
}

// Cuts a copy of one direction's bytes into records by their length words:
// big-endian and counting what follows (client to daemon), or little-endian
// and counting what follows (daemon to client). Bytes that cannot be cut (a
// length over the limit, a tail at the end of the stream) are kept whole as
// they came, so the capture still shows everything that crossed.
class RecordCutter {
public:
    explicit RecordCutter(bool bigEndian) : mBigEndian(bigEndian) {}

    template <typename Emit>
    void Feed(const char* data, size_t len, Emit emit) {
        if (mUncuttable) {
            emit(std::string_view(data, len));
            return;
        }
        mBuffer.append(data, len);
        size_t at = 0;
        while (mBuffer.size() - at >= 4) {
            const auto* p = reinterpret_cast<const unsigned char*>(mBuffer.data() + at);
            uint32_t length =
                mBigEndian
                    ? (uint32_t{p[0]} << 24 | uint32_t{p[1]} << 16 | uint32_t{p[2]} << 8 | p[3])
                    : (uint32_t{p[3]} << 24 | uint32_t{p[2]} << 16 | uint32_t{p[1]} << 8 | p[0]);
            if (length > velard_framing::kMaxRecordLen) {
                mUncuttable = true;
                break;
            }
            if (mBuffer.size() - at - 4 < length) break;
            emit(std::string_view(mBuffer).substr(at, 4 + length));
            at += 4 + length;
        }
        if (mUncuttable && at < mBuffer.size()) {
            emit(std::string_view(mBuffer).substr(at));
            at = mBuffer.size();
        }
        mBuffer.erase(0, at);
    }

    // The stream ended: a partial record goes out as it is.
    template <typename Emit>
    void Finish(Emit emit) {
        if (!mBuffer.empty()) emit(std::string_view(mBuffer));
        mBuffer.clear();
    }

private:
    bool mBigEndian;
    bool mUncuttable = false;
    std::string mBuffer;
};

// One client connection and the relay's own connection to the daemon for it.
struct Connection {
    int number = 0;
    int client = -1;
    int daemon = -1;
    std::string toDaemon, toClient;  // what the other side has not taken yet
    bool clientEof = false, daemonEof = false, daemonShut = false;
    bool commented = false;
    RecordCutter fromClient{true}, fromDaemon{false};
};

enum class Io { kOk, kAgain, kEnd };

// Non-blocking transfer; kEnd on end of stream or any failure.
Io ReadSome(int fd, std::string* into) {
    char buf[65536];
    for (;;) {
        ssize_t n = read(fd, buf, sizeof buf);
        if (n > 0) {
            into->append(buf, static_cast<size_t>(n));
            return Io::kOk;
        }
        if (n < 0 && errno == EINTR) continue;
        return n < 0 && errno == EAGAIN ? Io::kAgain : Io::kEnd;
    }
}

Io Flush(int fd, std::string* pending) {
    while (!pending->empty()) {
        ssize_t n = send(fd, pending->data(), pending->size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (n > 0) {
            pending->erase(0, static_cast<size_t>(n));
        } else if (n < 0 && errno == EINTR) {
            continue;
        } else {
            return n < 0 && errno == EAGAIN ? Io::kAgain : Io::kEnd;
        }
    }
    return Io::kOk;
}

}  // namespace

class Relay {
public:
    Relay(int out, int publicFd, int daemonListen, sockaddr_un addr, socklen_t addrLen, int records,
          int stop)
        : mWriter(out),
          mOut(out),
          mPublic(publicFd),
          mDaemonListen(daemonListen),
          mDaemonAddr(addr),
          mDaemonAddrLen(addrLen),
          mRecords(records),
          mStop(stop) {}

    ~Relay() {
        for (int fd : {mOut, mDaemonListen, mRecords, mStop, mStopWrite})
            if (fd >= 0) close(fd);
    }

    bool Start() {
        if (!mWriter.Start()) return false;
        mThread = std::thread([this] { Run(); });
        return true;
    }

    void Stop() {
        char c = 0;
        ssize_t ignored = write(mStopWrite, &c, 1);
        (void)ignored;
        if (mThread.joinable()) mThread.join();
    }

    std::string writerError() const { return mWriter.error(); }
    int mStopWrite = -1;

private:
    // Packets are gathered and written together before their bytes are
    // passed on (and before the loop waits again): one write where there
    // would be several, and a live reader still sees each packet at once.
    void Capture(uint32_t interface, uint32_t flags, std::string_view bytes,
                 std::string_view comment = {}) {
        if (mWriter.ok())
            mGathered += vp::PacketBlock(interface, vp::NowUs(), flags, bytes, comment);
    }

    void WriteGathered() {
        if (mGathered.empty()) return;
        if (!mWriter.Write(mGathered))
            Log("stopped writing (" + mWriter.error() + "); the session goes on");
        mGathered.clear();
    }

    // Takes every stack record queued so far.
    void DrainRecords() {
        if (mRecords < 0) return;
        for (;;) {
            ssize_t n = recv(mRecords, mRecordBuffer.data(), mRecordBuffer.size(),
                             MSG_DONTWAIT | MSG_TRUNC);
            if (n < 0 && errno == EINTR) continue;
            if (n <= 0) return;
            std::string_view r(mRecordBuffer.data(),
                               std::min(static_cast<size_t>(n), mRecordBuffer.size()));
            // Requests go down to the stack; answers and notifications come up.
            static constexpr std::string_view kRequest = R"({"type":"request")";
            bool down = r.substr(0, kRequest.size()) == kRequest;
            Capture(vp::kInterfaceStack, down ? vp::kOutbound : vp::kInbound, r);
        }
    }

    void FrameFrom(Connection& c, bool fromClient, std::string_view record) {
        std::string comment;
        if (!c.commented) {
            comment = "connection " + std::to_string(c.number);
            c.commented = true;
        }
        Capture(vp::kInterfaceFrames, fromClient ? vp::kInbound : vp::kOutbound, record, comment);
    }

    void Accept() {
        for (;;) {
            int client = accept4(mPublic, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
            if (client < 0) {
                if (errno == EINTR) continue;
                if (errno != EAGAIN) Log(Errno("accept"));
                return;
            }
            // The daemon's backlog is where a client waits while the daemon
            // (re)starts; if even that is full, the client is turned away as
            // a full backlog would turn it away.
            int daemon = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
            if (daemon < 0 ||
                connect(daemon, reinterpret_cast<sockaddr*>(&mDaemonAddr), mDaemonAddrLen) != 0) {
                Log(Errno("connect to the daemon"));
                if (daemon >= 0) close(daemon);
                close(client);
                continue;
            }
            mConnections.emplace_back();
            Connection& c = mConnections.back();
            c.number = ++mConnectionCount;
            c.client = client;
            c.daemon = daemon;
        }
    }

    // Reads what one side sent, copies its whole records into the capture
    // and queues the bytes for the other side.
    void Pump(Connection& c, bool fromClient) {
        std::string got;
        Io r = ReadSome(fromClient ? c.client : c.daemon, &got);
        // A request frame is captured before the daemon can act on it, so it
        // precedes the stack record it causes. The stack writes a record
        // before handing it to the daemon, so every record behind the bytes
        // just read from the daemon is queued by now and goes first.
        if (!fromClient) DrainRecords();
        RecordCutter& cutter = fromClient ? c.fromClient : c.fromDaemon;
        auto capture = [&](std::string_view rec) { FrameFrom(c, fromClient, rec); };
        if (r == Io::kEnd) {
            (fromClient ? c.clientEof : c.daemonEof) = true;
            cutter.Finish(capture);
        } else if (r == Io::kOk) {
            cutter.Feed(got.data(), got.size(), capture);
            (fromClient ? c.toDaemon : c.toClient) += got;
        }
    }

    // Moves what is ready across one connection; false once it is over.
    bool Service(Connection& c, short clientEvents, short daemonEvents) {
        constexpr short kReadable = POLLIN | POLLHUP | POLLERR;
        if (!c.clientEof && (clientEvents & kReadable)) Pump(c, true);
        if (!c.daemonEof && (daemonEvents & kReadable)) Pump(c, false);
        // Whatever either side is about to see is in the file first, so a
        // capture cut short by a kill still holds all that anybody got.
        WriteGathered();
        if (!c.daemonEof && Flush(c.daemon, &c.toDaemon) == Io::kEnd) {
            c.toDaemon.clear();  // the daemon is gone; its end of stream follows
        }
        if (Flush(c.client, &c.toClient) == Io::kEnd) {
            // The client is gone: the daemon gets its end of stream.
            c.toClient.clear();
            c.clientEof = true;
        }
        if (c.clientEof && c.toDaemon.empty() && !c.daemonShut) {
            shutdown(c.daemon, SHUT_WR);
            c.daemonShut = true;
        }
        // The daemon closed (it ended, or refused a second client): so does
        // this connection once the client has had everything it sent.
        return !(c.daemonEof && c.toClient.empty());
    }

    void Run() {
        std::vector<pollfd> fds;
        for (;;) {
            fds.clear();
            fds.push_back({mStop, POLLIN, 0});
            fds.push_back({mPublic, POLLIN, 0});
            fds.push_back({mRecords, POLLIN, 0});
            for (const Connection& c : mConnections) {
                // A side is read only while the other has taken everything,
                // so a slow reader holds back its writer as it would directly.
                short ce = static_cast<short>((!c.clientEof && c.toDaemon.empty() ? POLLIN : 0) |
                                              (c.toClient.empty() ? 0 : POLLOUT));
                short de = static_cast<short>((!c.daemonEof && c.toClient.empty() ? POLLIN : 0) |
                                              (c.toDaemon.empty() || c.daemonEof ? 0 : POLLOUT));
                // A side with nothing to wait for stays out, or its hang-up
                // would wake the loop until the other side ends too.
                fds.push_back({ce ? c.client : -1, ce, 0});
                fds.push_back({de ? c.daemon : -1, de, 0});
            }
            WriteGathered();
            if (poll(fds.data(), fds.size(), -1) < 0) {
                if (errno == EINTR) continue;
                Log(Errno("poll"));
                break;
            }
            if (fds[2].revents) DrainRecords();
            if (fds[0].revents) break;
            if (fds[1].revents) Accept();
            size_t i = 3;
            for (auto it = mConnections.begin(); it != mConnections.end() && i < fds.size();
                 i += 2) {
                if (Service(*it, fds[i].revents, fds[i + 1].revents)) {
                    ++it;
                } else {
                    close(it->client);
                    close(it->daemon);
                    it = mConnections.erase(it);
                }
            }
        }
        DrainRecords();
        for (Connection& c : mConnections) {
            c.fromClient.Finish([&](std::string_view rec) { FrameFrom(c, true, rec); });
            c.fromDaemon.Finish([&](std::string_view rec) { FrameFrom(c, false, rec); });
            close(c.client);
            close(c.daemon);
        }
        mConnections.clear();
        WriteGathered();
    }

    vp::Writer mWriter;
    std::string mGathered;  // whole blocks not yet written
    int mOut;
    int mPublic;
    int mDaemonListen;
    sockaddr_un mDaemonAddr;
    socklen_t mDaemonAddrLen;
    int mRecords;
    int mStop;
    std::thread mThread;
    std::list<Connection> mConnections;
    int mConnectionCount = 0;
    // A record larger than the stack's socket buffer never arrives, so this
    // holds any record that can.
    std::vector<char> mRecordBuffer = std::vector<char>(8 << 20);
};

RelayHandle StartRelay(const std::string& target, int publicFd, RelayFds* fds, std::string* error) {
    auto fail = [&](const std::string& why, std::initializer_list<int> toClose) {
        *error = why;
        for (int fd : toClose)
            if (fd >= 0) close(fd);
        return RelayHandle();
    };

    int out;
    if (target == "-") {
        // Standard output carries the capture alone: the daemon and this
        // process write their other output to standard error.
        out = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
        if (out < 0 || dup2(STDERR_FILENO, STDOUT_FILENO) < 0)
            return fail(Errno("standard output"), {out});
    } else {
        out = open(target.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        if (out < 0) return fail(Errno(target.c_str()), {});
    }

    // Clients now reach the relay here, and only the relay.
    int flags = fcntl(publicFd, F_GETFD);
    if (flags < 0 || fcntl(publicFd, F_SETFD, flags | FD_CLOEXEC) != 0 ||
        fcntl(publicFd, F_SETFL, fcntl(publicFd, F_GETFL) | O_NONBLOCK) != 0 ||
        listen(publicFd, 16) != 0)
        return fail(Errno("public socket"), {out});

    // The daemon's socket: an abstract address the kernel picks, so there is
    // no file to clean up. It listens from here on, so the relay can connect
    // a client before the daemon has started; the daemon's own listen call
    // changes nothing.
    int daemonListen = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un addr{};
    addr.sun_family = AF_UNIX;
    socklen_t addrLen = sizeof(sa_family_t);
    if (daemonListen < 0 || bind(daemonListen, reinterpret_cast<sockaddr*>(&addr), addrLen) != 0 ||
        (addrLen = sizeof addr,
         getsockname(daemonListen, reinterpret_cast<sockaddr*>(&addr), &addrLen)) != 0 ||
        listen(daemonListen, 4) != 0)
        return fail(Errno("daemon socket"), {out, daemonListen});

    // Stack records: one datagram each, in order; the stack never waits on
    // it (a full channel loses a record, not time).
    int records[2];
    if (socketpair(AF_UNIX, SOCK_SEQPACKET, 0, records) != 0)
        return fail(Errno("record channel"), {out, daemonListen});
    fcntl(records[0], F_SETFD, FD_CLOEXEC);
    int sendBuffer = 8 << 20;
    setsockopt(records[1], SOL_SOCKET, SO_SNDBUF, &sendBuffer, sizeof sendBuffer);

    int stop[2];
    if (pipe2(stop, O_CLOEXEC) != 0)
        return fail(Errno("pipe"), {out, daemonListen, records[0], records[1]});

    RelayHandle relay(new Relay(out, publicFd, daemonListen, addr, addrLen, records[0], stop[0]));
    relay->mStopWrite = stop[1];
    if (!relay->Start()) {
        *error = "cannot write the capture: " + relay->writerError();
        close(records[1]);
        return RelayHandle();
    }
    fds->daemonListen = daemonListen;
    fds->recordChannel = records[1];
    return relay;
}

void RelayStop::operator()(Relay* relay) const {
    relay->Stop();
    delete relay;
}

}  // namespace velard_capture
