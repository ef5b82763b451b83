#!/usr/bin/env python3
"""A controller for the simulated stack, with nothing but the standard library.

The controller listens; the simulated stack inside velard connects to it when
the daemon starts (VELAR_SIM_CONTROL names the socket), so start this first:

    python3 tools/example_controller.py /tmp/ctl &
    build/release/tools/velard-host --socket /tmp/velard.sock -- VELAR_SIM_CONTROL=/tmp/ctl &
    echo '{"reqid":"REQ_UA_DELETION","requestUaDeletion":{"handle":7}}' |
        build/release/tools/imsctl --socket /tmp/velard.sock

Each request the daemon hands to the stack arrives as one JSON line. This
controller answers a user agent's deletion (request 103) with a success and
then tells the daemon that the stack's alarm was cancelled (notification
20002); it leaves every other request unanswered, as a stack that is busy
would. It prints each line it receives ("<") and sends (">").

The daemon ends with its client and velard-host starts a new one, whose
simulator connects again: the controller takes one connection after another.
"""
import json
import os
import socket
import sys


def show(direction, line):
    print(direction, line, flush=True)


def send(stream, message):
    line = json.dumps(message, separators=(",", ":"))
    show(">", line)
    stream.write(line + "\n")
    stream.flush()


def answer(stream, request, seq):
    record = request["record"]
    if record["id"] != 103:
        return seq
    # The answer's class is the one the daemon's handler for the id reads;
    # members left out are 0, false or empty.
    handle = record["args"][0]
    send(stream, {"type": "response", "token": request["token"], "seq": seq,
                  "record": {"class": "GeneralResponseData", "id": 103,
                             "fields": {"handle": handle, "result": 0}}})
    send(stream, {"type": "notify", "seq": seq + 1,
                  "record": {"class": "PrimitiveData<int>", "id": 20002,
                             "fields": {"value": handle}}})
    return seq + 2


def serve(connection):
    # Byte strings in records are JSON strings whose characters 0 to 255 are
    # the bytes: text.encode("latin-1") gives them back. One file to read and
    # one to write: a text file that does both drops what it has read ahead
    # whenever it writes.
    lines = connection.makefile("r", encoding="utf-8", newline="\n")
    stream = connection.makefile("w", encoding="utf-8", newline="\n")
    seq = 1
    for line in lines:
        show("<", line.rstrip("\n"))
        message = json.loads(line)
        if message["type"] == "request":
            seq = answer(stream, message, seq)
        elif message["type"] == "error":
            print("the simulator refused message", message.get("seq"), file=sys.stderr)


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: example_controller.py SOCKET_PATH")
    path = sys.argv[1]
    if os.path.exists(path):
        os.unlink(path)
    server = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
    server.bind(path)
    server.listen(1)
    while True:
        connection, _ = server.accept()
        with connection:
            serve(connection)


if __name__ == "__main__":
    main()
