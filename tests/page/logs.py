"""Logs that the tests of the page are shown. Those of the example session stand beside tests/tool."""

import random


def document(elements, name="run-4242", host="lab7"):
    return (
        '<?xml version="1.0" encoding="UTF-8"?>\n'
        f'<{name}\n time="2026-11-21 14:03:59"\n CADI_version="CADI 2.0"\n hostname="{host}"\n OS="Linux">\n'
        f"{elements}</{name}>\n"
    )


def call(number, name, entered, returned, inside, results="", thread=1234, status="CADI_STATUS_OK"):
    end = "" if returned is None else f"        <return_time>{returned:.6f} s</return_time>\n{results}"
    if returned is not None and status:
        end += f"        <return>{status}</return>\n"
    return (
        f'    <{name} call_num="{number}"\n     call_time="{entered:.6f} s"\n     threadId="{thread}">\n'
        f"{inside}{end}    </{name}>\n"
    )


def memory(address, data=None):
    text = (
        "        <startAddress>\n            <overlay>0</overlay>\n            <location>\n"
        "                <spaceId>1</spaceId>\n                <spaceName>Memory</spaceName>\n"
        f"                <addr>0x{address:016x}</addr>\n            </location>\n        </startAddress>\n"
    )
    return text + (values(data) if data is not None else "")


def values(data):
    return "        <data>\n" + "".join(f"            <value>0x{byte:02x}</value>\n" for byte in data) + "        </data>\n"


def register(name, number, value):
    return (
        f"        <reg>\n            <{name}>\n                <regNumber>{number}</regNumber>\n"
        f"                <bytes>00000000 00000000 00000000 {value:08x} </bytes>\n            </{name}>\n        </reg>\n"
    )


def many(count, seed=1, slow=None):
    """A session of so many calls of two threads; some failed, and the last never returned. Every so many calls one is slow."""
    chance = random.Random(seed)
    now = 0.0
    parts = []
    for number in range(1, count + 1):
        now += chance.choice([2e-6, 5e-6, 3e-5, 3e-5, 1e-3 if chance.random() < 0.01 else 1e-6])
        took = chance.choice([2e-6, 3e-6, 8e-6, 2e-5 if chance.random() < 0.1 else 1e-6])
        if slow and number % slow == 0:
            took = (1000 + number // slow) * 1e-6
        status = "CADI_STATUS_IllegalArgument" if chance.random() < 0.002 else "CADI_STATUS_OK"
        thread = 5678 if chance.random() < 0.1 else 1234
        address = 0x1000 + 4 * chance.randrange(64)
        kind = number % 4
        if number == count:
            parts.append(call(number, "CADIMemWrite", now, None, memory(0x40000000, [1, 2, 3, 4])))
        elif kind == 0:
            data = [chance.randrange(256) for _ in range(4)]
            parts.append(call(number, "CADIMemRead", now, now + took, memory(address) + "        <bytes>4</bytes>\n", values(data), thread, status))
        elif kind == 1:
            data = [chance.randrange(256) for _ in range(4)]
            parts.append(call(number, "CADIMemWrite", now, now + took, memory(address, data), "", thread, status))
        elif kind == 2:
            parts.append(call(number, "CADIRegRead", now, now + took, "        <regCount>1</regCount>\n", register("x%d" % (number % 5), number % 5, chance.randrange(1 << 32)), thread, status))
        else:
            parts.append(call(number, "CADIExecGetMode", now, now + took, "", "        <mode>CADI_EXECMODE_Stop</mode>\n", thread, status))
        now += took
    return document("".join(parts))


EVIL = "&lt;/script&gt;&lt;script&gt;hacked=1&lt;/script&gt;&lt;!--&lt;script&gt;&lt;img src=x onerror=hacked=1&gt;\" ' \\x00 &amp;lt; \u2028 \u202e"


def hostile():
    """Everywhere a log says something, it says markup."""
    long_name = "n" * 1_000_000
    return document(
        f"<!-- </script><script>hacked=1</script> {'c' * 100} -->\n"
        + call(1, "CADIXfaceBypass", 1e-6, 2e-6, f"        <command>{EVIL}</command>\n", f"        <{long_name}>1</{long_name}>\n", status=EVIL)
        + call(2, long_name, 3e-6, 4e-6, f"        <text>{EVIL * 3000}</text>\n")
        + call(3, "CADIMemRead", 5e-6, 6e-6, memory(0x10).replace("Memory", EVIL), values(range(256)))
        + call(4, "__proto__", 7e-6, 8e-6, "        <constructor>1</constructor>\n        <__proto__>2</__proto__>\n")
        + call(5, "CADIRegRead", 9e-6, 10e-6, "", register("__proto__", 7, 1))
        + call(6, "CADIStop", 11e-6, None, f"        <why>{EVIL}</why>\n"),
        host=EVIL.replace('"', "&quot;"),
    )


def strange():
    """A clock that was set back, a number that begins again, a number beyond 2^53, a beginning that is lost."""
    return document(
        call(7, "A", 1e-6, 2e-6, "")
        + call(7, "A", 3e-6, 4e-6, "        <x>0x0000000000003000</x>\n")
        + "    <Lost call_num=\"3\">\n        <return_time>0.000005 s</return_time>\n    </Lost>\n"
        + call(9007199254740995, "B", 6e-6, 7e-6, "        <x>12288</x>\n", status="")
        + call(8, "C", 4294967295.9, 4294967295.95, "")
        + call(9, "D", 4294967295.99, 0.5, "")
        + call(11, "F", 0.65, 0.55, "")
        + call(10, "E", 0.6, 0.7, "        <deep><a><x>abc</x></a></deep>\n        <none/>\n", status="Invalid return type: 0x63")
    )


def chain(count):
    """Each call of the connection begins before the one before it has returned."""
    parts = []
    for number in range(1, count + 2):
        now = number * 1e-5
        if number <= count:
            parts.append(f'    <Call call_num="{number}"\n     call_time="{now:.6f} s">\n    </Call>\n')
        if number > 1:
            parts.append(f'    <Call call_num="{number - 1}">\n        <return_time>{now + 1e-6:.6f} s</return_time>\n    </Call>\n')
    return document("".join(parts), name="connection-4242")


def overlapping():
    """Calls of one connection that overlap, so that none is within the other for long."""
    head = '    <{0} call_num="{1}"\n     call_time="{2:.6f} s">\n    </{0}>\n'
    tail = '    <{0} call_num="{1}">\n        <return_time>{2:.6f} s</return_time>\n        <return>CADI_STATUS_OK</return>\n    </{0}>\n'
    return document(
        head.format("Connect", 1, 1e-6) + head.format("GetTargets", 2, 2e-6) + tail.format("Connect", 1, 3e-6)
        + head.format("GetInfo", 3, 4e-6) + tail.format("GetTargets", 2, 5.0) + tail.format("GetInfo", 3, 5.000002),
        name="connection-4242",
    )
