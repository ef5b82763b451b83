// Reader of init's service descriptions (.rc files), so that the host's init
// stand-in and the checks start velard from the same description as a
// device does.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace velard_rc {

struct Socket {
    std::string name;
    std::string type;  // stream, dgram or seqpacket, maybe with "+passcred"
    std::string perm;
    std::string user;   // empty: root
    std::string group;  // empty: root
    int line = 0;
};

struct Service {
    std::string name;
    std::vector<std::string> argv;  // argv[0] is the binary's path
    std::string user = "root";      // init's default
    std::vector<std::string> groups;
    // The `capabilities` option given at all, and its list (which may be
    // empty: then the service keeps none, even as root).
    bool capabilitiesGiven = false;
    std::vector<std::string> capabilities;
    std::vector<Socket> sockets;
    std::vector<std::pair<std::string, std::string>> env;  // setenv, in order
    // Every option line as tokens, the ones above included.
    std::vector<std::vector<std::string>> options;
    int line = 0;

    bool HasOption(const std::string& keyword) const;
};

// Parses the text of an .rc file. Service sections are kept; actions ("on")
// and imports are skipped. An option init does not know, an option with the
// wrong number of arguments, a line outside any section or a service named
// twice is an error: *error is set to "<where>:<line>: <why>".
bool Parse(const std::string& text, const std::string& where, std::vector<Service>* out,
           std::string* error);
bool ReadFile(const std::string& path, std::vector<Service>* out, std::string* error);

// The environment variable in which init publishes a socket of this name.
std::string SocketVariable(const std::string& socketName);

// What a host's init stand-in takes from a file that holds one service with
// one stream socket: the socket's variable and the service's environment.
// The binary's path, user, groups, capabilities and the socket's mode and
// owner belong to the device.
struct HostLaunch {
    std::string service;
    std::string socketVariable;
    std::vector<std::string> env;  // NAME=VALUE
};
bool HostLaunchFromFile(const std::string& path, HostLaunch* out, std::string* error);

}  // namespace velard_rc
