"""The maps, and the collections made of them, in the order of a pass."""

import gdb

from .memory import (
    ERRORS,
    aligned,
    bits_of,
    constant,
    object_at,
    object_of,
    objects_of,
    read,
    readable,
    require,
    symbol_address,
    words,
)

WORD = (1 << 64) - 1
FACTOR1, FACTOR2 = 0x9E3779B97F4A7C15, 0xD6E8FEB86659FD93
INVERSE1, INVERSE2 = (pow(factor, -1, 1 << 64) for factor in (FACTOR1, FACTOR2))
ID_LIMIT = 4096

PROCESS_SEED = "_ZN3Mox6detail11processSeedE"


# --- hashes, as in mox/Hash.h ---


def mix(x):
    x = x * FACTOR1 & WORD
    return (x ^ x >> 32) * FACTOR2 & WORD


def unmix(x):
    x = x * INVERSE2 & WORD
    return (x ^ x >> 32) * INVERSE1 & WORD


def salt_and_mask(seed):
    """Those of a seed type: the process's, or one of the collection's own."""
    if seed.name == "Mox::ProcessSeed":
        return words(symbol_address(PROCESS_SEED), 2)
    salt = int(seed.template_argument(0)) * FACTOR1 & WORD
    return salt, ~mix(~salt & WORD) & WORD


def key_traits(key_type):
    return gdb.lookup_type(f"Mox::KeyTraits<{key_type.unqualified().strip_typedefs().name}>")


# --- the members of each form: how many, and an iterator over keys and values ---


def hash_members(table):
    key_type, value_type, seed = (table.type.template_argument(i) for i in range(3))
    slots, end, size = int(table["slots_"]), int(table["end_"]), int(table["size_"])
    if slots == 0:
        require(size == 0 and end == 0)
        return 0, iter(())

    # A slot is the hash, the key where the hash does not tell it, and the value (mox/detail/Slot.h).
    is_key_stored = not constant(key_traits(key_type), "isBijective")
    stored = [key_type, value_type] if is_key_stored else [value_type]
    key_offset = aligned(8, *stored)
    value_offset = aligned(key_offset + (key_type.sizeof if is_key_stored else 0), value_type)
    slot_size = aligned(value_offset + value_type.sizeof, *stored, gdb.lookup_type("unsigned long"))
    bitmap = words(slots + (end + 1) * slot_size, end // 64 + 1)
    require(sum(word.bit_count() for word in bitmap) == size)
    salt, mask = (0, 0) if is_key_stored else salt_and_mask(seed)
    key_at, value_at = objects_of(key_type), objects_of(value_type)

    def members():
        for index, word in enumerate(bitmap):
            for bit in bits_of(word):
                place = slots + (64 * index + bit) * slot_size
                if is_key_stored:
                    key = key_at(place + key_offset)
                else:
                    key = object_of(unmix(words(place, 1)[0] ^ mask) ^ salt, key_type)
                yield key, value_at(place + value_offset)

    return size, members()


def block_members(array, key_type, value_type):
    """Those of an id map's small form: the sorted ids, and the values behind them."""
    ids, size, capacity = int(array["ids_"]), int(array["size_"]), int(array["capacity_"])
    require(size <= capacity <= ID_LIMIT and (ids != 0 or capacity == 0))
    raw = read(ids, 2 * size) if size else b""
    sorted_ids = [int.from_bytes(raw[i : i + 2], "little") for i in range(0, 2 * size, 2)]
    require(all(a < b for a, b in zip(sorted_ids, sorted_ids[1:] + [ID_LIMIT])))
    values = ids + aligned(2 * capacity, value_type)
    value_at = objects_of(value_type)
    return size, (
        (object_of(id_, key_type), value_at(values + place * value_type.sizeof))
        for place, id_ in enumerate(sorted_ids)
    )


def page_members(pages, key_type, value_type):
    """Those of its large form: per 64 ids a bitmap, how many values there is room for, and the packed values."""
    size = int(pages["size_"])
    pages_of_64 = [(index, page) for index, page in enumerate(words(int(pages["pages_"].address), 64)) if page]
    bitmaps = {index: words(page, 1)[0] for index, page in pages_of_64}
    require(size == sum(bitmap.bit_count() for bitmap in bitmaps.values()))
    header = aligned(8 + 2, value_type)
    value_at = objects_of(value_type)

    def members():
        for index, page in pages_of_64:
            for place, bit in enumerate(bits_of(bitmaps[index])):
                yield object_of(64 * index + bit, key_type), value_at(page + header + place * value_type.sizeof)

    return size, members()


def id_members(map_):
    key_type, value_type = (map_.type.template_argument(i) for i in range(2))
    # The owner of the pages is one word.
    (pages,) = words(int(map_["pages_"].address), 1)
    if pages == 0:
        return block_members(map_["array_"], key_type, value_type)
    pages_type = map_["pages_"].type.strip_typedefs().template_argument(0)
    return page_members(object_at(pages, pages_type), key_type, value_type)


def few_members(map_):
    size = int(map_["size_"])
    if size == 0:
        require(int(map_["several"]) == 0)
        return 0, iter(())
    first = map_["sole"].address if size == 1 else map_["several"]
    read(int(first + (size - 1)), first.type.target().sizeof)
    return size, ((first[i]["key"], first[i]["value"]) for i in range(size))


# --- printers ---


class MapPrinter:
    """Shows the number of members, and each as [key] = value, or, in a set, as key."""

    is_set = False

    def __init__(self, value):
        try:
            size, self.pairs = self.members(value)
            self.shown = "1 member" if size == 1 else f"{size} members"
        except ERRORS:
            self.shown, self.pairs = "<invalid>", iter(())

    def to_string(self):
        return self.shown

    def children(self):
        pairs, self.pairs = self.pairs, iter(())
        try:
            for key, value in pairs:
                yield "key", readable(key)
                if not self.is_set:
                    yield "value", readable(value)
        except ERRORS:
            yield "key", "<invalid>"
            if not self.is_set:
                yield "value", "<invalid>"

    def display_hint(self):
        return "array" if self.is_set else "map"


class HashMapPrinter(MapPrinter):
    def members(self, value):
        return hash_members(value)


class IdMapPrinter(MapPrinter):
    def members(self, value):
        return id_members(value)


class FewMapPrinter(MapPrinter):
    def members(self, value):
        return few_members(value)


def members_beneath(collection):
    map_ = collection["map_"]
    map_ = map_.cast(map_.type.unqualified().strip_typedefs())
    return id_members(map_) if map_.type.name.startswith("Mox::IdMap<") else hash_members(map_)


class ValueCollectionPrinter(MapPrinter):
    def members(self, value):
        self.is_set = value.type.template_argument(1).name == "Mox::Present"
        return members_beneath(value)


class EntityCollectionPrinter(MapPrinter):
    """Shows the entities; the pointers to them where their type is not known."""

    def members(self, value):
        size, pairs = members_beneath(value)
        entity = value.type.template_argument(1)
        if not entity.strip_typedefs().fields():
            return size, pairs
        entity_at = objects_of(entity)
        return size, ((key, entity_at(pointer["object_"])) for key, pointer in pairs)
