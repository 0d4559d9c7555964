"""File servers for the tests of transfers, each a program of its own:

    serve.py ftp|ssh|tftp FOLDER PORT USER PASSWORD KEY

serves the files of FOLDER on 127.0.0.1. ssh speaks SFTP and SCP with the host key in the file KEY. Of a file
NAME no more than the half is sent as long as there is NAME.hold beside it: so a test can look at a transfer
that has come half its way. The libraries come with the system's Python, so servers.py starts this file with
it."""

import asyncio
import os
import select
import socket
import struct
import sys
import time

HOLD = ".hold"


def is_held(path, offset):
    return os.path.exists(path + HOLD) and offset >= os.path.getsize(path) // 2


# --- FTP -----------------------------------------------------------------------------------------------

def serve_ftp(folder, port, user, password):
    from pyftpdlib.authorizers import DummyAuthorizer
    from pyftpdlib.filesystems import AbstractedFS
    from pyftpdlib.handlers import FTPHandler
    from pyftpdlib.servers import FTPServer

    class HeldFile:
        def __init__(self, file):
            self.file = file

        def read(self, size=-1):
            while is_held(self.file.name, self.file.tell()):
                time.sleep(0.01)  # holds the whole server, which has one client
            return self.file.read(min(size, 4096))

        def __getattr__(self, name):
            return getattr(self.file, name)

    class HeldFiles(AbstractedFS):
        def open(self, filename, mode):
            return HeldFile(super().open(filename, mode))

    handler = FTPHandler
    handler.auth_failed_timeout = 0
    handler.authorizer = DummyAuthorizer()
    handler.authorizer.add_user(user, password, folder, perm="elradfmwMT")
    handler.abstracted_fs = HeldFiles
    handler.use_sendfile = False  # it would go past HeldFile
    FTPServer(("127.0.0.1", port), handler).serve_forever()


# --- SSH -----------------------------------------------------------------------------------------------

def serve_ssh(folder, port, user, password, key):
    import asyncssh

    class Accounts(asyncssh.SSHServer):
        def password_auth_supported(self):
            return True

        def validate_password(self, username, given):
            return (username, given) == (user, password)

        def public_key_auth_supported(self):
            return True

        def validate_public_key(self, username, given):
            """The key that may log in without a password is in the file `allowed`, when there is one."""
            if username != user or not os.path.exists("allowed"):
                return False
            return given.public_data == asyncssh.read_public_key("allowed").public_data

    class HeldFiles(asyncssh.SFTPServer):
        def __init__(self, channel):
            super().__init__(channel, chroot=folder)

        async def read(self, file_obj, offset, size):
            while is_held(os.fsdecode(file_obj.name), offset):
                await asyncio.sleep(0.01)
            return super().read(file_obj, offset, size)

    async def serve():
        await asyncssh.listen("127.0.0.1", port, server_host_keys=[key], server_factory=Accounts,
                              sftp_factory=HeldFiles, allow_scp=True)
        await asyncio.Event().wait()

    asyncio.run(serve())


# --- TFTP (RFC 1350, with the options of RFC 2348 and RFC 2349 that say sizes) -------------------

READ, WRITE, DATA, ACK, ERROR, OPTIONS = 1, 2, 3, 4, 5, 6


class TftpTransfer:
    """One file on its way, on a socket of its own."""

    def __init__(self, peer, words):
        self.socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.socket.bind(("127.0.0.1", 0))
        self.socket.connect(peer)
        self.options = dict(zip(words[2::2], words[3::2]))
        self.block_size = int(self.options.get("blksize", 512))

    def exchange(self, packet, opcode, number):
        """Sends a packet, again after each second, until what it asks for comes; returns the rest of that."""
        for _ in range(30):
            self.socket.send(packet)
            while select.select([self.socket], [], [], 1)[0]:
                answer = self.socket.recv(65536)
                if struct.unpack("!HH", answer[:4]) == (opcode, number & 0xFFFF):
                    return answer[4:]
        raise TimeoutError

    def accepted(self, size):
        """What is said to options, if any were given."""
        told = {name: value for name, value in self.options.items() if name == "blksize"}
        if "tsize" in self.options:
            told["tsize"] = str(size if size is not None else self.options["tsize"])
        return b"".join(f"{name}\0{value}\0".encode() for name, value in told.items())

    def send_file(self, path):
        size = os.path.getsize(path)
        told = self.accepted(size)
        if told:
            self.exchange(struct.pack("!H", OPTIONS) + told, ACK, 0)
        with open(path, "rb") as file:
            for number in range(1, size // self.block_size + 2):
                while is_held(path, file.tell()):
                    time.sleep(0.01)
                block = file.read(self.block_size)
                self.exchange(struct.pack("!HH", DATA, number & 0xFFFF) + block, ACK, number)

    def take_file(self, path):
        told = self.accepted(None)
        answer = struct.pack("!H", OPTIONS) + told if told else struct.pack("!HH", ACK, 0)
        number = 0
        with open(path, "wb") as file:
            while True:
                block = self.exchange(answer, DATA, number + 1)
                number += 1
                answer = struct.pack("!HH", ACK, number & 0xFFFF)
                file.write(block)
                if len(block) < self.block_size:
                    break
        self.socket.send(answer)


def serve_tftp(folder, port):
    """One transfer after the other."""
    door = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
    door.bind(("127.0.0.1", port))
    while True:
        request, peer = door.recvfrom(65536)
        opcode, words = struct.unpack("!H", request[:2])[0], request[2:].decode().lower().split("\0")
        transfer = TftpTransfer(peer, words)
        path = os.path.join(folder, words[0])
        if opcode == READ and not os.path.exists(path):
            transfer.socket.send(struct.pack("!HH", ERROR, 1) + b"File not found\0")
        elif opcode == READ:
            transfer.send_file(path)
        elif opcode == WRITE:
            transfer.take_file(path)


def main():
    kind, folder, port, user, password, key = sys.argv[1:]
    if kind == "ssh":
        serve_ssh(folder, int(port), user, password, key)
    elif kind == "tftp":
        serve_tftp(folder, int(port))
    else:
        serve_ftp(folder, int(port), user, password)


if __name__ == "__main__":
    main()
