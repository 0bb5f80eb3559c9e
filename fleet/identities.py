"""Each agent of a fleet its own server: the identities of a base machine
description (serial numbers, UUIDs, MAC addresses, WWNs) replaced by ones
that are unique across the fleet and the same for the same seed.

Within one machine, equal identities stay equal and different ones stay
different: a port's burned-in, permanent and network addresses are one MAC
in the base machine, and one (new) MAC in every agent.
"""

import hashlib
import re

# Where identities live in a machine description: a pattern over the path
# of a value ("/store/s~1vpd~1nictbl/0/macAddr", JSON Pointer style), and
# what kind of identity it holds.
IDENTITY_FIELDS = [
    (r"/store/s~1vpd~1machine~1serialNo$", "serial"),
    (r"/store/s~1vpd~1machine~1uuid$", "hex"),
    (r"/serial_number$|/serialNo$|/serialNumber$", "serial"),
    (r"/uuid$", "hex"),
    (r"/macAddr$|/burnedInAddress$|/permanentAddress$|/networkAddress$|/fcoePermanentAddress$|/fcoeNetworkAddress$",
     "mac"),
    # RAID controllers: serial number (text0) and SAS port WWNs; drives:
    # serial number (text162).
    (r"/raid/controllers/\d+/text0$", "serial"),
    (r"/raid/controllers/\d+/ports/\d+$", "hex"),
    (r"/raid/drives/\d+/text162$", "serial"),
    # Persistent-memory modules: serial number.
    (r"/persistentMemory/\d+/text4$", "hex"),
]

_BASE36 = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ"
_MAC = re.compile(r"^[0-9A-Fa-f]{2}([:-])(?:[0-9A-Fa-f]{2}\1){4}[0-9A-Fa-f]{2}$")
_HEX = re.compile(r"^[0-9A-Fa-f]+$")


def _base36(number, width):
    digits = ""
    for _ in range(width):
        number, digit = divmod(number, 36)
        digits = _BASE36[digit] + digits
    if number:
        raise ValueError("number too large for %d base-36 digits" % width)
    return digits


def _pointer(path):
    return "".join("/" + str(p).replace("~", "~0").replace("/", "~1") for p in path)


class Identities:
    """The identities of agent `agent` (0, 1, ...) of the fleet of `seed`."""

    # An agent's serial numbers end in 3 base-36 digits of the agent and 2 of
    # the identity's number within the machine: 46,656 agents of up to 1,296
    # identities each.
    MAX_AGENTS = 36 ** 3

    def __init__(self, seed, agent):
        if not 0 <= agent < self.MAX_AGENTS:
            raise ValueError("agent %d out of range (0 to %d)" % (agent, self.MAX_AGENTS - 1))
        self.seed = seed
        self.agent = agent
        self._replacements = {}

    def _number(self, original):
        # Equal originals share one number, so they get one replacement.
        key = original.upper()
        if key not in self._replacements:
            self._replacements[key] = len(self._replacements)
        return self._replacements[key]

    def _agent_code(self):
        # A permutation of the agent numbers that depends on the seed, so that
        # two seeds give two fleets with different serial numbers.
        space = self.MAX_AGENTS
        stride = 7919  # prime, does not divide 36 ** 3
        return (self.agent * stride + self.seed * 104729) % space

    def serial(self, original):
        number = self._number(original)
        code = _base36(self._agent_code(), 3) + _base36(number % 1296, 2)
        kept = original[: max(len(original) - len(code), 0)]
        text = kept + code
        return text if original.upper() == original else text.lower()

    def hex(self, original):
        number = self._number(original)
        digest = hashlib.sha256(("%d/%d/%d" % (self.seed, self.agent, number)).encode()).hexdigest()
        digest = (digest * ((len(original) // len(digest)) + 1))[: len(original)]
        return digest.upper() if original.upper() == original else digest

    def mac(self, original):
        number = self._number(original)
        separator = _MAC.match(original).group(1)
        # A locally administered unicast address: 02, the seed's byte, the
        # agent in two bytes, the identity's number in two.
        octets = [0x02, self.seed & 0xFF, self.agent >> 8, self.agent & 0xFF, number >> 8, number & 0xFF]
        text = separator.join("%02x" % o for o in octets)
        return text.upper() if original.upper() == original else text

    def replace(self, kind, original):
        # A value that is not of its field's usual form (a GPU's "GPU-..."
        # UUID) is still an identity: it is replaced as a serial number.
        if kind == "mac" and _MAC.match(original):
            return self.mac(original)
        if kind == "hex" and _HEX.match(original):
            return self.hex(original)
        if original:
            return self.serial(original)
        return original


def personalize(machine, seed, agent):
    """A copy of `machine` whose identities are agent `agent`'s of `seed`."""
    identities = Identities(seed, agent)
    patterns = [(re.compile(p), kind) for p, kind in IDENTITY_FIELDS]

    def walk(value, path):
        if isinstance(value, dict):
            return {k: walk(v, path + [k]) for k, v in value.items()}
        if isinstance(value, list):
            return [walk(v, path + [i]) for i, v in enumerate(value)]
        if isinstance(value, str):
            pointer = _pointer(path)
            for pattern, kind in patterns:
                if pattern.search(pointer):
                    return identities.replace(kind, value)
        return value

    return walk(machine, [])
