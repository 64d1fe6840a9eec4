"""Direct3D bytecode containers ("DXBC"): taking them apart, putting them together, signing them."""

import struct

TAG = b"DXBC"
HEADER_SIZE = 32
# The signature covers everything behind itself.
SIGNED_FROM = 20

CUSTOM_DATA = 0x35
DCL_GLOBAL_FLAGS = 0x6A
DCL_STRUCTURED_OR_RAW = range(0x9D, 0xA3)
RAW_AND_STRUCTURED_BUFFERS = 1 << 14
# A one-word declaration: optimisers may reorder arithmetic, and structured buffers are used before shader model 5.
GLOBAL_FLAGS_TOKEN = 0x0100486A


class ContainerError(Exception):
    pass


def _md5_tables():
    import math

    shifts = [s for row in ((7, 12, 17, 22), (5, 9, 14, 20), (4, 11, 16, 23), (6, 10, 15, 21)) for s in row * 4]
    return shifts, [int(abs(math.sin(i + 1)) * 2**32) for i in range(64)]


_SHIFTS, _SINES = _md5_tables()


def _md5_block(state, block):
    """The compression function of MD5 (RFC 1321) on 64 bytes."""
    words = struct.unpack("<16I", block)
    a, b, c, d = state
    for i in range(64):
        if i < 16:
            mixed, word = (b & c) | (~b & d), i
        elif i < 32:
            mixed, word = (d & b) | (~d & c), (5 * i + 1) % 16
        elif i < 48:
            mixed, word = b ^ c ^ d, (3 * i + 5) % 16
        else:
            mixed, word = c ^ (b | ~d), 7 * i % 16
        total = (a + mixed + _SINES[i] + words[word]) & 0xFFFFFFFF
        rotated = (total << _SHIFTS[i] | total >> (32 - _SHIFTS[i])) & 0xFFFFFFFF
        a, d, c, b = d, c, b, (b + rotated) & 0xFFFFFFFF
    return [(old + new) & 0xFFFFFFFF for old, new in zip(state, (a, b, c, d))]


def signature(container):
    """The 16 bytes that sign a container: MD5, but for what closes the message.

    MD5 ends with the padding and the length of the message in bits. Here the number of bits stands in the first word of
    the last block, and the last word is a quarter of it with the lowest bit set.
    """
    data = container[SIGNED_FROM:]
    bits = len(data) * 8
    first = struct.pack("<I", bits & 0xFFFFFFFF)
    last = struct.pack("<I", bits >> 2 & 0xFFFFFFFF | 1)
    tail = data[len(data) // 64 * 64:]
    if len(tail) < 56:
        closing = first + tail + b"\x80" + bytes(55 - len(tail)) + last
    else:
        closing = tail + b"\x80" + bytes(63 - len(tail)) + first + bytes(56) + last

    message = data[:len(data) // 64 * 64] + closing
    state = [0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476]
    for start in range(0, len(message), 64):
        state = _md5_block(state, message[start:start + 64])
    return struct.pack("<4I", *state)


def read(container):
    """The chunks of a container as (tag, bytes) pairs, in their order. Its signature must hold."""
    if len(container) < HEADER_SIZE or container[:4] != TAG:
        raise ContainerError("no bytecode container")
    version, size, count = struct.unpack_from("<3I", container, 20)
    if version != 1 or size != len(container) or HEADER_SIZE + 4 * count > size:
        raise ContainerError("damaged container header")
    if container[4:20] != signature(container):
        raise ContainerError("the container's signature does not hold")
    chunks = []
    for offset in struct.unpack_from(f"<{count}I", container, HEADER_SIZE):
        if offset + 8 > size:
            raise ContainerError("a chunk lies outside its container")
        tag, length = struct.unpack_from("<4sI", container, offset)
        if offset + 8 + length > size:
            raise ContainerError("a chunk is longer than its container")
        chunks.append((tag, container[offset + 8:offset + 8 + length]))
    return chunks


def write(chunks):
    """The signed container of (tag, bytes) pairs."""
    offset = HEADER_SIZE + 4 * len(chunks)
    offsets = []
    body = b""
    for tag, data in chunks:
        offsets.append(offset + len(body))
        body += struct.pack("<4sI", tag, len(data)) + data
    rest = struct.pack("<3I", 1, offset + len(body), len(chunks)) + struct.pack(f"<{len(offsets)}I", *offsets) + body
    return TAG + signature(bytes(SIGNED_FROM) + rest) + rest


def _declare_structured_buffers(code):
    """The program's words with the global flag that structured buffers need before shader model 5."""
    words = list(struct.unpack(f"<{len(code) // 4}I", code))
    if len(words) < 2 or words[1] != len(words):
        raise ContainerError("damaged program")
    needed, flags_at, at = False, None, 2
    while at < len(words):
        opcode = words[at] & 0x7FF
        length = words[at + 1] if opcode == CUSTOM_DATA and at + 1 < len(words) else words[at] >> 24 & 0x7F
        if length == 0:
            raise ContainerError("damaged instruction")
        needed = needed or opcode in DCL_STRUCTURED_OR_RAW
        flags_at = at if opcode == DCL_GLOBAL_FLAGS else flags_at
        at += length
    is_before_5 = words[0] >> 4 & 0xF < 5
    if not needed or not is_before_5:
        return code
    if flags_at is not None:
        words[flags_at] |= RAW_AND_STRUCTURED_BUFFERS
    else:
        words.insert(2, GLOBAL_FLAGS_TOKEN)
        words[1] += 1
    return struct.pack(f"<{len(words)}I", *words)


def with_structured_buffers_declared(container):
    """The container with its program told to allow structured buffers, where it uses any; signed anew if changed."""
    chunks = read(container)
    completed = [(tag, _declare_structured_buffers(data) if tag in (b"SHDR", b"SHEX") else data)
                 for tag, data in chunks]
    return container if completed == chunks else write(completed)
