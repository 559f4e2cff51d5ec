#!/usr/bin/env python3
"""Writes the sample animations below resources/intermediate/anim/.

walk_sheet.tga is the sprite sheet: four 16 by 16 walk frames side by side in
the top row, each of one colour (FRAME_COLORS), and below them a white 4 by 4
particle at (0, 16) and a white 8 by 8 eye at (16, 16); the rest is clear.

walk.asq.xml: a collision box, a cell that flips through the four frames
every 10 frames (keys at 0, 10, 20, 30; the sequence ends at 39) and a dust
generator below the feet with a burst of 4 at frame 0. The collision track
comes first: a unit places collision boxes through the draw elements of the
same rank, and the cells that follow put their own boxes back.
blink.asq.xml: a collision and an eye cell whose colour darkens at frame 15.
idle.asq.xml: the first walk frame, with blink nested as "eyes" 3 pixels up.
character.aml.xml lists idle at index 0 and walk at index 3.

walk.seq, idle.seq and character.aml are the native forms of the same (a
".seq" with its header, as the reader expects it; the nested animation and
the texture are named by path). Tests copy them below native/.
The files are committed; run this again only to change them:
python3 scripts/make_animations.py
"""
import os
import struct

ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "resources", "intermediate", "anim")

SHEET = "anim/walk_sheet"
SHEET_WIDTH, SHEET_HEIGHT = 64, 32
FRAME_COLORS = [(230, 40, 40), (40, 200, 40), (40, 60, 230), (230, 210, 40)]


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


def sheet_pixel(x, y):
    if y < 16:
        return FRAME_COLORS[x // 16] + (255,)
    if 0 <= x < 4 and 16 <= y < 20:
        return (255, 255, 255, 255)
    if 16 <= x < 24 and 16 <= y < 24:
        return (255, 255, 255, 255)
    return (0, 0, 0, 0)


def make_sheet():
    header = struct.pack("<BBBHHBHHHHBB", 0, 0, 2, 0, 0, 0, 0, 0, SHEET_WIDTH, SHEET_HEIGHT, 32, 8 | 0x20)
    body = bytearray()
    for y in range(SHEET_HEIGHT):
        for x in range(SHEET_WIDTH):
            r, g, b, a = sheet_pixel(x, y)
            body += bytes((b, g, r, a))
    return header + bytes(body)


# Key types: code -> (XML type, key class, stride, interpolated elements,
# parameter offset, native packing, XML attributes of a value).
def attrs(*names):
    return lambda value: " ".join('%s="%s"' % (n, v) for n, v in zip(names, value))


def fixed(value):
    return struct.pack("<i", int(value * 65536))


KEY_TYPES = {
    6: ("u8", "SequencerUniqueKey<u8>", 4, 1, 2, lambda v: struct.pack("<B", v), None),
    7: ("u16", "SequencerUniqueKey<u16>", 4, 1, 2, lambda v: struct.pack("<H", v), None),
    8: ("u32", "SequencerUniqueKey<u32>", 8, 1, 4, lambda v: struct.pack("<I", v), None),
    10: ("f32", "SequencerUniqueKey<f32>", 8, 1, 4, lambda v: struct.pack("<f", v), None),
    12: ("size", "SequencerUniqueKey<sSize>", 12, 2, 4, lambda v: struct.pack("<II", *v), attrs("width", "height")),
    13: ("point", "SequencerUniqueKey<sPoint>", 12, 2, 4, lambda v: struct.pack("<ii", *v), attrs("x", "y")),
    15: ("color", "SequencerUniqueKey<sColor>", 8, 4, 4, lambda v: struct.pack("<4B", *v),
         attrs("red", "green", "blue", "alpha")),
    17: ("texcoord", "SequencerUniqueKey<sTexcoord>", 8, 2, 4, lambda v: struct.pack("<HH", *v), attrs("u", "v")),
    18: ("fixed", "SequencerUniqueKey<sFixed>", 8, 1, 4, fixed, None),
    23: ("Resource", "SequencerUniqueKey<ResourceBase>", 236, 0, 0, None, None),
    129: (None, "SequencerUniqueKey<void>", 4, 0, 0, None, None),
    133: ("u32", "SequencerUniqueKey<u32>", 8, 1, 4, lambda v: struct.pack("<I", v), None),
}


class Lane:
    def __init__(self, name, key_type, keys, trigger=False):
        self.name, self.key_type, self.keys, self.trigger = name, key_type, keys, trigger


class Track:
    def __init__(self, name, class_name, lanes):
        self.name, self.class_name, self.lanes = name, class_name, lanes


class Animation:
    def __init__(self, end, tracks, texture=SHEET, fps=60):
        self.end, self.tracks, self.texture, self.fps = end, tracks, texture, fps


def prop(name, kind, value):
    return '<%s type="%s" count="0" index="0" value="%s" />' % (name, kind, value)


class Ids:
    def __init__(self):
        self.next = 1000

    def take(self):
        self.next += 1
        return self.next


def object_list(name, ids, elements):
    lines = ['<%s type="Object" count="0" index="0" typeinfo="ObjectList" id="%d" list_count="%d" stable="true" >'
             % (name, ids.take(), len(elements))]
    for index, (class_name, body) in enumerate(elements):
        lines.append('\t<element%d typeinfo="%s" id="%d" stable="false" >' % (index, class_name, ids.take()))
        lines += ['\t\t' + line for line in body]
        lines.append('\t</element%d>' % index)
    lines.append('</%s>' % name)
    return lines


def xml_key(lane, frame, mode, value):
    kind, _, _, _, _, _, attributes = KEY_TYPES[lane.key_type]
    lines = [prop("frame", "u16", frame), prop("interpolate_type", "u8", mode), prop("trigger_only", "u8", 1)]
    if lane.key_type == 23:
        lines.append('<resource type="Resource" count="0" index="0" typeinfo="AnimResource" path="%s" />' % value)
        lines.append(prop("resource_typeid", "u32", name_hash("AnimResource")))
    elif kind is not None:
        if attributes is None:
            text = ("%f" % value) if isinstance(value, float) else str(value)
            lines.append(prop("parameter", kind, text))
        else:
            lines.append('<parameter type="%s" count="0" index="0" %s />' % (kind, attributes(value)))
    return lines


def xml_lane(ids, lane):
    _, key_class, stride, interpolate, _, _, _ = KEY_TYPES[lane.key_type]
    body = [prop("control_type", "u32", 1 if lane.trigger else 0), prop("control_name", "string", lane.name),
            prop("key_type", "u32", lane.key_type), prop("key_stride", "u32", stride),
            prop("key_typeid", "u32", name_hash(key_class)), prop("key_interpolate_num", "u32", interpolate)]
    keys = [(key_class, xml_key(lane, *key)) for key in lane.keys]
    return ("SequencerLane", body + object_list("key_list", ids, keys))


def xml_animation(animation):
    ids = Ids()
    tracks = []
    for track in animation.tracks:
        body = [prop("track_name", "string", track.name),
                prop("object_type_id", "u32", name_hash(track.class_name))]
        tracks.append(("SequencerTrack", body + object_list("lane_list", ids, [xml_lane(ids, l) for l in track.lanes])))
    body = [prop("start_frame", "u32", 0), prop("end_frame", "u32", animation.end), prop("fps", "u32", animation.fps)]
    body += object_list("track_list", ids, tracks)
    body.append('<texture type="Resource" count="0" index="0" typeinfo="TextureResource" path="%s" />'
                % animation.texture)
    lines = ['<AnimResource typeinfo="AnimResource" id="%d" stable="true" >' % ids.take()]
    lines += ['\t' + line for line in body]
    lines.append('</AnimResource>')
    return '<?xml version="1.0"?>\n\n' + '\n'.join(lines) + '\n'


def native_key(lane, frame, mode, value):
    _, _, stride, _, offset, pack, _ = KEY_TYPES[lane.key_type]
    data = bytearray(stride)
    data[0:2] = struct.pack("<H", frame | (mode << 12))
    if lane.key_type == 23:
        path = value.encode()
        data[4:8] = struct.pack("<I", name_hash("AnimResource"))
        data[8:8 + len(path)] = path
        data[232:236] = struct.pack("<I", name_hash("intermediate/" + value + ".asq.xml"))
    elif pack is not None:
        parameter = pack(value)
        data[offset:offset + len(parameter)] = parameter
    return bytes(data)


def native_animation(animation):
    texture = animation.texture.encode() + b"\0"
    data = b"SEQ " + struct.pack("<8I", 0, 1, 0, animation.end, animation.fps, len(animation.tracks), 0, len(texture))
    data += texture
    for track in animation.tracks:
        data += struct.pack("<2I", name_hash(track.class_name), len(track.lanes))
        for lane in track.lanes:
            _, _, stride, interpolate, _, _, _ = KEY_TYPES[lane.key_type]
            data += struct.pack("<IIHBB", 1 if lane.trigger else 0, name_hash(lane.name), len(lane.keys), stride,
                                interpolate)
            data += b"".join(native_key(lane, *key) for key in lane.keys)
    return data


CONSTANT, LINEAR = 0, 1

WALK = Animation(39, [
    Track("hit", "AnimCollision", [
        Lane("Position", 13, [(0, CONSTANT, (0, 0))]),
        Lane("Size", 12, [(0, CONSTANT, (12, 16))]),
    ]),
    Track("body", "AnimCell", [
        Lane("Position", 13, [(0, CONSTANT, (0, 0))]),
        Lane("Size", 12, [(0, CONSTANT, (16, 16))]),
        Lane("UV", 17, [(0, CONSTANT, (0, 0)), (10, CONSTANT, (16, 0)), (20, CONSTANT, (32, 0)),
                        (30, CONSTANT, (48, 0))]),
    ]),
    Track("dust", "AnimGenerator", [
        Lane("MaxParticleNum", 6, [(0, CONSTANT, 16)]),
        Lane("Position", 13, [(0, CONSTANT, (0, 12))]),
        Lane("Size", 12, [(0, CONSTANT, (4, 4))]),
        Lane("UV", 17, [(0, CONSTANT, (0, 16))]),
        Lane("VelocityMode", 8, [(0, CONSTANT, 2)]),
        Lane("Direction", 10, [(0, CONSTANT, 90.0)]),
        Lane("DirectionRange", 10, [(0, CONSTANT, 30.0)]),
        Lane("Speed", 10, [(0, CONSTANT, 0.5)]),
        Lane("OuterRadius", 8, [(0, CONSTANT, 3)]),
        Lane("LifeDuration", 7, [(0, CONSTANT, 20)]),
        Lane("AppearanceTime", 7, [(0, CONSTANT, 4)]),
        Lane("DisappearanceTime", 7, [(0, CONSTANT, 4)]),
        Lane("GenerataionRate", 18, [(0, CONSTANT, 0.25)]),
        Lane("Generate", 133, [(0, CONSTANT, 4)], trigger=True),
    ]),
])

BLINK = Animation(29, [
    Track("hit", "AnimCollision", [
        Lane("Size", 12, [(0, CONSTANT, (4, 4))]),
    ]),
    Track("eye", "AnimCell", [
        Lane("Size", 12, [(0, CONSTANT, (4, 4))]),
        Lane("UV", 17, [(0, CONSTANT, (16, 16))]),
        Lane("Color", 15, [(0, CONSTANT, (255, 255, 255, 255)), (15, CONSTANT, (40, 40, 40, 255))]),
    ]),
])

IDLE = Animation(59, [
    Track("body", "AnimCell", [
        Lane("Size", 12, [(0, CONSTANT, (16, 16))]),
    ]),
    Track("eyes", "AnimSequencer", [
        Lane("Resource", 23, [(0, CONSTANT, "anim/blink")]),
        Lane("Play", 129, [(0, CONSTANT, None)], trigger=True),
        Lane("Position", 13, [(0, CONSTANT, (0, -3))]),
    ]),
])

LIST = [(0, "anim/idle"), (3, "anim/walk")]


def list_xml():
    entries = dict(LIST)
    lines = ['<AnimationListIntermediate typeinfo="AnimationListIntermediate" id="1001" stable="true" >',
             '\t<AnimationList type="Resource" count="64" index="0" >']
    for index in range(64):
        path = entries.get(index)
        extra = ' typeinfo="AnimResource" path="%s"' % path if path else ""
        lines.append('\t\t<element%d index="%d"%s />' % (index, index, extra))
    lines += ['\t</AnimationList>', '</AnimationListIntermediate>']
    return '<?xml version="1.0"?>\n\n' + '\n'.join(lines) + '\n'


def list_native():
    data = b"ANML" + struct.pack("<2I", 0, len(LIST))
    for index, path in LIST:
        data += struct.pack("<I", index) + path.encode() + b"\0"
    return data


def write(name, data):
    mode = "wb" if isinstance(data, bytes) else "w"
    with open(os.path.join(ROOT, name), mode) as out:
        out.write(data)


def main():
    os.makedirs(ROOT, exist_ok=True)
    write("walk_sheet.tga", make_sheet())
    for name, animation in (("walk", WALK), ("blink", BLINK), ("idle", IDLE)):
        write(name + ".asq.xml", xml_animation(animation))
    write("walk.seq", native_animation(WALK))
    write("idle.seq", native_animation(IDLE))
    write("character.aml.xml", list_xml())
    write("character.aml", list_native())


if __name__ == "__main__":
    main()
