#!/usr/bin/env python3
"""Writes the sample sequences below resources/intermediate/samples/.

seq_child.seq.xml is a blank timeline of 120 frames. seq_nested.seq.xml
plays it as a nested sequence on a track of class Sequencer: it sets the
child's resource and starts it at frame 0; its "Seek" and "Stop" lanes have
no keys yet (a trigger key fires on every step that approaches it, so such
keys belong where the child is to be held). seq_nested.seq is the native
form of the same sequence, with the header the reader expects. The files are
committed; run this again only to change them: python3 scripts/make_sequences.py
"""
import os
import struct

ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "resources", "intermediate", "samples")


def name_hash(text):
    """The engine's name hash: CRC-32, polynomial 0x04C11DB7, most significant
    bit first, start 0xFFFFFFFF, no final inversion."""
    crc = 0xFFFFFFFF
    for byte in text.encode():
        crc ^= byte << 24
        for _ in range(8):
            crc = ((crc << 1) ^ 0x04C11DB7) if crc & 0x80000000 else (crc << 1)
            crc &= 0xFFFFFFFF
    return crc


class Ids:
    """Object ids, unique within one file."""

    def __init__(self):
        self.next = 1000

    def take(self):
        self.next += 1
        return self.next


def value(name, kind, text):
    return '<%s type="%s" count="0" index="0" value="%s" />' % (name, kind, text)


def object_list(name, ids, elements):
    lines = ['<%s type="Object" count="0" index="0" typeinfo="ObjectList" id="%d" list_count="%d" stable="true" >'
             % (name, ids.take(), len(elements))]
    for index, element in enumerate(elements):
        lines.append('\t<element%d typeinfo="%s" id="%d" stable="false" >' % (index, element[0], ids.take()))
        lines += ['\t\t' + line for line in element[1]]
        lines.append('\t</element%d>' % index)
    lines.append('</%s>' % name)
    return lines


def key(frame, mode, parameter=None):
    """A key: frame, interpolation, trigger flag and the parameter lines."""
    lines = [value("frame", "u16", frame), value("interpolate_type", "u8", mode), value("trigger_only", "u8", 1)]
    return lines + (parameter or [])


def lane(ids, control_type, name, key_type, stride, key_class, interpolate_num, keys):
    lines = [value("control_type", "u32", control_type), value("control_name", "string", name),
             value("key_type", "u32", key_type), value("key_stride", "u32", stride),
             value("key_typeid", "u32", name_hash(key_class)), value("key_interpolate_num", "u32", interpolate_num)]
    return ("SequencerLane", lines + object_list("key_list", ids, [(key_class, k) for k in keys]))


def sequence(ids, end, fps, tracks):
    lines = ['<SequencerResourceIntermediate typeinfo="SequencerResourceIntermediate" id="%d" stable="true" >'
             % ids.take()]
    body = [value("start_frame", "u32", 0), value("end_frame", "u32", end), value("fps", "u32", fps)]
    body += object_list("track_list", ids, tracks)
    lines += ['\t' + line for line in body]
    lines.append('</SequencerResourceIntermediate>')
    return '<?xml version="1.0"?>\n\n' + '\n'.join(lines) + '\n'


def track(ids, name, class_name, lanes):
    lines = [value("track_name", "string", name), value("object_type_id", "u32", name_hash(class_name))]
    return ("SequencerTrack", lines + object_list("lane_list", ids, lanes))


CHILD_PATH = "samples/seq_child"


def nested_xml():
    ids = Ids()
    resource = ['<resource type="Resource" count="0" index="0" typeinfo="SequencerResourceIntermediate" path="%s" />'
                % CHILD_PATH, value("resource_typeid", "u32", name_hash("SequencerResourceIntermediate"))]
    lanes = [
        lane(ids, 0, "Resource", 23, 236, "SequencerUniqueKey<ResourceBase>", 0, [key(0, 0, resource)]),
        lane(ids, 1, "Seek", 133, 8, "SequencerUniqueKey<u32>", 1, []),
        lane(ids, 1, "Play", 129, 4, "SequencerUniqueKey<void>", 0, [key(0, 0)]),
        lane(ids, 1, "Stop", 129, 4, "SequencerUniqueKey<void>", 0, []),
    ]
    return sequence(ids, 120, 60, [track(ids, "child", "Sequencer", lanes)])


def nested_native():
    """The same sequence as a ".seq" file, keys laid out as playback reads them."""
    def native_key(frame, mode, parameter=b""):
        return struct.pack("<H", frame | (mode << 12)) + parameter

    path = CHILD_PATH.encode()
    resource_key = native_key(0, 0, b"\0\0" + struct.pack("<I", name_hash("SequencerResourceIntermediate")) +
                              path + b"\0" * (224 - len(path)) +
                              struct.pack("<I", name_hash("intermediate/" + CHILD_PATH + ".seq.xml")))
    lanes = [
        (0, "Resource", 236, 0, [resource_key]),
        (1, "Seek", 8, 1, []),
        (1, "Play", 4, 0, [native_key(0, 0, b"\0\0")]),
        (1, "Stop", 4, 0, []),
    ]
    data = b"SEQ " + struct.pack("<8I", 0, 0, 0, 120, 60, 1, 0, 0)
    data += struct.pack("<2I", name_hash("Sequencer"), len(lanes))
    for control_type, name, stride, interpolate_num, keys in lanes:
        data += struct.pack("<IIHBB", control_type, name_hash(name), len(keys), stride, interpolate_num)
        data += b"".join(keys)
    return data


def main():
    os.makedirs(ROOT, exist_ok=True)
    with open(os.path.join(ROOT, "seq_child.seq.xml"), "w") as out:
        out.write(sequence(Ids(), 120, 60, []))
    with open(os.path.join(ROOT, "seq_nested.seq.xml"), "w") as out:
        out.write(nested_xml())
    with open(os.path.join(ROOT, "seq_nested.seq"), "wb") as out:
        out.write(nested_native())


if __name__ == "__main__":
    main()
