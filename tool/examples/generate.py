#!/usr/bin/env python3
"""Writes the bundled example route documents of the krlayout tool.

Each harness is a tree: a trunk of junctions with sub-trees of branches to devices, drawn as the
route sketch a designer would leave behind (straight runs and bends, coordinates in metres).
Bundle diameters follow from the wires a segment carries; every device end has a connector in
the component map. Two small documents are broken on purpose: one holds a closed loop, one is in
two pieces.

    python3 tool/examples/generate.py [OUTPUT_FOLDER]

The output is deterministic: running it again rewrites the same files.
"""

import json
import math
import os
import random
import sys

# Outer diameter of one wire with its insulation (0.35-0.5 mm2 automotive wire), in metres.
WIRE_OD = 0.0016
MIN_DIAMETER = 0.003
MAX_DIAMETER = 0.025


def bundle_diameter(wires):
    """Diameter of a taped bundle of `wires` wires, rounded to 0.5 mm, 3 to 25 mm."""
    d = 0.001 + 1.2 * WIRE_OD * math.sqrt(wires)
    d = min(MAX_DIAMETER, max(MIN_DIAMETER, d))
    return round(d * 2000.0) / 2000.0


class Node:
    serial = 0

    def __init__(self, name, device=None, wires=0):
        Node.serial += 1
        self.name = "%s #%d" % (name, Node.serial)   # unique: owners of points are told apart
        self.device = device      # device name at a free end, None for a junction
        self.wires = wires        # wires ending at the device
        self.children = []
        self.x = 0.0
        self.y = 0.0

    def add(self, child):
        self.children.append(child)
        return child

    def leaves(self):
        if not self.children:
            return 1
        return sum(c.leaves() for c in self.children)

    def total_wires(self):
        return self.wires + sum(c.total_wires() for c in self.children)


class Harness:
    """Collects segments and checks that distinct points stay apart."""

    def __init__(self, name, description, first_id, seed):
        self.name = name
        self.description = description
        self.next_id = first_id
        self.rng = random.Random(seed)
        self.segments = []
        self.components = []
        self.points = {}          # rounded point -> owner, to keep distinct points apart
        self.next_connector = 1

    @staticmethod
    def key(p):
        return (round(p[0], 4), round(p[1], 4))

    def claim(self, p, owner):
        k = self.key(p)
        for q, o in self.points.items():
            if o != owner and abs(q[0] - k[0]) < 0.002 and abs(q[1] - k[1]) < 0.002:
                raise ValueError("%s: point %s of %s is too close to %s of %s"
                                 % (self.name, k, owner, q, o))
        self.points[k] = owner

    def free(self, p, owner):
        k = self.key(p)
        for q, o in self.points.items():
            if o != owner and abs(q[0] - k[0]) < 0.002 and abs(q[1] - k[1]) < 0.002:
                return False
        return True

    def segment(self, a, b, wires, path=None, component=None):
        """A segment from node a to node b along the bend points in path."""
        seg_id = self.next_id
        self.next_id += 1
        pts = [(a.x, a.y)] + list(path or []) + [(b.x, b.y)]
        self.claim(pts[0], a.name)
        self.claim(pts[-1], b.name)
        for i, p in enumerate(pts[1:-1]):
            self.claim(p, "bend %d of segment %d" % (i, seg_id))
        entities = []
        for p, q in zip(pts, pts[1:]):
            entities.append({
                "kind": "line",
                "start": [round(p[0], 4), round(p[1], 4), 0.0],
                "end": [round(q[0], 4), round(q[1], 4), 0.0],
            })
        self.segments.append({"id": seg_id, "value": bundle_diameter(wires), "entities": entities})
        if component:
            self.components.append({"id": seg_id, "text": component})
        return seg_id

    def connector_text(self, device, wires):
        """Component map text: pins "@" connector "@" device, e.g. "1-4@X12@Injector 1"."""
        name = "X%d" % self.next_connector
        self.next_connector += 1
        pins = "1" if wires <= 1 else "1-%d" % wires
        return "%s@%s@%s" % (pins, name, device)

    def path_between(self, a, b, owner):
        """Bend points for a run from a to b: straight, an L, or a slant then a drop."""
        dx = b.x - a.x
        dy = b.y - a.y
        choice = self.rng.random()
        if abs(dx) < 0.01 or abs(dy) < 0.01 or choice < 0.3:
            return []
        if choice < 0.65:
            p = (b.x, a.y + dy * self.rng.uniform(0.35, 0.6))
            candidate = [p]
        else:
            p = (a.x + dx * 0.5, a.y + dy * 0.5)
            q = (b.x, a.y + dy * 0.75)
            candidate = [p, q]
        if all(self.free(p, owner) for p in candidate):
            return candidate
        return []

    def emit_tree(self, node):
        """Segments from node to each child, depth first; the child's wires decide the diameter."""
        for child in node.children:
            wires = child.total_wires()
            component = None
            if child.device is not None:
                component = self.connector_text(child.device, child.wires)
            self.segment(node, child, wires, self.path_between(node, child, child.name), component)
            self.emit_tree(child)

    def document(self):
        return {
            "name": self.name,
            "description": self.description,
            "features": ["Route1"],
            "components": self.components,
            "segments": self.segments,
        }


def place_subtree(node, left, y, direction, level, leaf_width, rng):
    """Tidy placement: each node sits over the span of its leaves, children one level further."""
    if not node.children:
        node.x = left + leaf_width / 2.0
        node.y = y
        return left + leaf_width
    x = left
    for child in node.children:
        step = level * rng.uniform(0.8, 1.25)
        x = place_subtree(child, x, y + direction * step, direction, level, leaf_width, rng)
    node.x = (node.children[0].x + node.children[-1].x) / 2.0
    node.y = y
    return x


def build_trunk(harness, root, stations, y0, level, leaf_width, gap):
    """A horizontal trunk from root through one junction per station.

    A station is (up_subtrees, down_subtrees): sub-trees hung above and below the junction. The
    junctions are spaced so that no two sub-trees on one side share any width.
    """
    rng = harness.rng
    x_up = root.x + gap
    x_down = root.x + gap
    prev = root
    for up, down in stations:
        width_up = sum(t.leaves() for t in up) * leaf_width
        width_down = sum(t.leaves() for t in down) * leaf_width
        centre = max(x_up + width_up / 2.0, x_down + width_down / 2.0, prev.x + gap)
        junction = Node("junction")
        junction.x = centre
        junction.y = y0 + rng.uniform(-0.01, 0.01)
        prev.add(junction)
        for trees, direction, width in ((up, 1.0, width_up), (down, -1.0, width_down)):
            left = centre - width / 2.0
            for t in trees:
                junction.add(t)
                left = place_subtree(t, left, junction.y + direction * level * rng.uniform(0.7, 1.1),
                                     direction, level, leaf_width, rng)
        x_up = centre + width_up / 2.0 + leaf_width * 0.5
        x_down = centre + width_down / 2.0 + leaf_width * 0.5
        prev = junction
    return prev


def device(name, wires):
    return Node(name, device=name, wires=wires)


def group(name, devices):
    node = Node(name)
    for d in devices:
        node.add(d)
    return node


def engine_bay():
    h = Harness("Engine-bay harness", "Engine harness of a four-cylinder car engine: trunk from the "
                "engine control unit along the cylinder head, sub-harnesses to the injectors and "
                "ignition coils, sensors and the charging circuit.", 1, 11)
    ecu = Node("ECU", device="Engine control unit", wires=0)
    ecu.x, ecu.y = 0.0, 0.0
    injectors = group("injector rail", [device("Injector %d" % i, 2) for i in range(1, 5)])
    coils = group("coil pack", [device("Ignition coil %d" % i, 3) for i in range(1, 5)])
    stations = [
        ([device("Fuse and relay box", 10)], [group("battery", [device("Battery +", 1),
                                                               device("Starter", 2)])]),
        ([injectors], [device("Crankshaft sensor", 3)]),
        ([group("intake", [device("Throttle body", 6), device("MAP sensor", 3),
                           device("Intake air temperature", 2)])],
         [device("Knock sensor", 2), device("Oil pressure switch", 1)]),
        ([coils], [device("Camshaft sensor", 3)]),
        ([group("front", [device("Coolant temperature", 2), device("Radiator fan", 2)])],
         [group("charging", [device("Alternator", 3), device("A/C compressor", 2)])]),
        ([group("fuel", [device("Fuel pressure sensor", 3), device("EGR valve", 5)])],
         [device("VVT solenoid", 2)]),
        ([device("Oxygen sensor upstream", 4)], [device("Oxygen sensor downstream", 4)]),
    ]
    last = build_trunk(h, ecu, stations, 0.0, 0.16, 0.075, 0.12)
    last.add(device("Purge valve", 2))
    last.children[-1].x = last.x + 0.18
    last.children[-1].y = last.y + 0.03
    # The engine control unit end carries every wire of the harness.
    ecu_wires = ecu.total_wires()
    first = ecu.children[0]
    h.segment(ecu, first, ecu_wires, [], h.connector_text("Engine control unit", ecu_wires))
    h.emit_tree(first)
    return h


def dashboard():
    h = Harness("Dashboard harness", "Instrument panel harness along the cross-car beam, from the "
                "body harness inline connector at the left A-pillar to the right A-pillar, with "
                "branches to the cluster, infotainment, climate control, switches and airbags.",
                1001, 23)
    rng = h.rng
    inline = Node("inline", device="Body harness inline", wires=0)
    inline.x, inline.y = 0.0, 0.0

    def switches(prefix, names, wires=(2, 5)):
        return group(prefix, [device(n, rng.randint(*wires)) for n in names])

    stations = [
        ([switches("left switches", ["Light switch", "Headlamp levelling", "Fog lamp switch",
                                     "Mirror adjust switch"])],
         [device("Left footwell lamp", 2), device("Left speaker", 2)]),
        ([group("steering column", [device("Clock spring", 8),
                                    switches("column switches", ["Wiper stalk", "Indicator stalk",
                                                                 "Cruise control stalk"]),
                                    device("Steering angle sensor", 4)])],
         [group("pedals", [device("Brake light switch", 3), device("Clutch switch", 2),
                           device("Accelerator pedal", 6)]), device("OBD port", 7)]),
        ([group("cluster", [device("Instrument cluster", 12), device("Head-up display", 6),
                            device("Cluster dimmer", 2)])],
         [group("ignition", [device("Ignition switch", 6), device("Immobiliser antenna", 2),
                             device("Start button", 4)])]),
        ([group("centre stack", [device("Radio", 14), device("Navigation display", 10),
                                 switches("hazard cluster", ["Hazard switch", "Central lock switch",
                                                             "Rear demister switch"]),
                                 device("Clock", 3)])],
         [group("console", [device("USB port", 4), device("12V socket front", 2),
                            device("Gear selector", 8), device("Parking brake switch", 3),
                            switches("seat heating", ["Seat heating left", "Seat heating right"])])]),
        ([group("climate", [device("Climate control panel", 10), device("Sun sensor", 3),
                            device("Cabin temperature sensor", 2), device("Blower regulator", 4)])],
         [group("blower", [device("Blower motor", 2), device("Recirculation flap motor", 5),
                           device("Mix flap motor", 5), device("Mode flap motor", 5)])]),
        ([group("top", [device("Tweeter left", 2), device("Tweeter right", 2),
                        device("Windscreen heater", 2), device("Alarm LED", 2),
                        device("Interior camera", 4)])],
         [group("body control", [device("Body control module A", 16),
                                 device("Body control module B", 16),
                                 device("Body control module C", 12)])]),
        ([group("passenger airbag", [device("Passenger airbag", 4), device("Airbag off lamp", 2),
                                     device("Passenger occupancy sensor", 4)])],
         [group("fuse box", [device("Fuse box feed", 4), device("Fuse box signals", 12),
                             device("Relay carrier", 8)])]),
        ([group("glovebox", [device("Glovebox lamp", 2), device("Glovebox switch", 2),
                             device("CD changer", 8)])],
         [device("Right footwell lamp", 2), device("Right speaker", 2),
          device("Passenger knee airbag", 2)]),
        ([group("roof feed", [device("Overhead console", 12), device("Interior mirror", 6),
                              device("Dashcam", 3), device("Alarm siren", 2)])],
         [group("right console", [device("Rear USB ports", 4), device("Rear climate panel", 8),
                                  device("12V socket rear", 2)])]),
        ([switches("right switches", ["Window switch right", "Mirror fold switch",
                                      "Child lock switch"])],
         [group("right pillar", [device("Right A-pillar inline", 20), device("Door harness right", 16)])]),
    ]
    # The far end of the beam: the driver side devices fed from the right pillar.
    stations.append(([group("overhead", [device("Ambient lamp left", 2), device("Ambient lamp right", 2),
                                         device("Microphone", 3), device("Rain light sensor", 4),
                                         device("Lane assist camera", 6), device("GPS antenna", 1)])],
                     [group("driver lower", [device("Wireless charger", 4), device("Telematics unit", 10),
                                             device("Keyless entry antenna", 2), device("Horn switch", 2),
                                             device("Driver knee airbag", 2), device("Steering wheel heater", 2),
                                             device("Door harness left", 16)])]))
    build_trunk(h, inline, stations, 0.0, 0.14, 0.045, 0.09)
    wires = inline.total_wires()
    first = inline.children[0]
    h.segment(inline, first, wires, [], h.connector_text("Body harness inline", wires))
    h.emit_tree(first)
    return h


def machine_cabinet():
    h = Harness("Machine cabinet harness", "Control cabinet of a packaging machine: the feed from the "
                "incoming terminal strip runs up the left wire duct and along five horizontal ducts "
                "to the PLC, I/O modules, contactors, motor protection switches, relays, terminal "
                "strips and the door devices.", 5001, 37)
    rng = h.rng
    feed = Node("feed", device="Incoming supply X0", wires=0)
    feed.x, feed.y = 0.0, 0.0
    # The left duct: a vertical trunk with one junction per row.
    rows_y = [0.25, 0.65, 1.05, 1.45, 1.85]
    prev = feed
    row_junctions = []
    for i, y in enumerate(rows_y):
        j = Node("duct %d" % (i + 1))
        j.x, j.y = 0.02 + 0.004 * i, y
        prev.add(j)
        prev = j
        row_junctions.append(j)

    def io_card(n):
        return group("I/O card %d" % n, [device("I/O %d.%d" % (n, k), rng.randint(1, 2))
                                        for k in range(1, rng.randint(5, 7))])

    def motor_starter(n):
        return group("starter %d" % n, [device("Contactor K%d" % n, 4),
                                        device("Motor protection Q%d" % n, 4),
                                        device("Motor terminal X%d" % n, 4)])

    def relays(first, count):
        return group("relays %d" % first, [device("Relay K%d" % (first + k), 3) for k in range(count)])

    def terminals(strip, first, count):
        return group("terminals %s" % strip,
                     [device("Terminal %s:%d-%d" % (strip, first + 4 * k, first + 4 * k + 3), 4)
                      for k in range(count)])

    layouts = [
        # Row 1 (bottom): power supply, terminal strips for field wiring.
        [([device("Power supply 24V", 4)], [terminals("X1", 1, 5)]),
         ([device("Main switch Q0", 3)], [terminals("X2", 1, 5)]),
         ([device("Surge protection", 2)], [terminals("X3", 1, 5)]),
         ([device("Circuit breaker F1", 2), device("Circuit breaker F2", 2)], [terminals("X4", 1, 4)]),
         ([device("Circuit breaker F3", 2), device("Circuit breaker F4", 2)], [terminals("X5", 1, 5)]),
         ([device("Transformer T1", 3)], [terminals("X6", 1, 5)])],
        # Row 2: motor starters.
        [([motor_starter(n)], [motor_starter(n + 8)]) for n in range(11, 19)],
        # Row 3: relays and safety.
        [([relays(21, 5)], [relays(26, 5)]),
         ([device("Safety relay", 8)], [device("Emergency stop relay", 6)]),
         ([relays(31, 4)], [device("Phase monitor", 4)]),
         ([relays(41, 5)], [relays(46, 5)])],
        # Row 4: I/O modules.
        [([io_card(n)], [io_card(n + 6)]) for n in range(1, 7)],
        # Row 5 (top): PLC, network, HMI in the door.
        [([group("PLC", [device("PLC CPU", 6), device("PLC power", 3)])],
          [device("Network switch", 4)]),
         ([group("door", [device("HMI panel", 6), device("Emergency stop button", 4),
                          device("Reset button", 2), device("Indicator lamps", 6),
                          device("Door switch", 2)])],
          [device("Cabinet fan", 2), device("Cabinet lamp", 2), device("Thermostat", 2)]),
         ([device("Service socket", 3)], [device("Encoder interface", 6)])],
    ]
    for j, stations in zip(row_junctions, layouts):
        build_trunk(h, j, stations, j.y, 0.07, 0.026, 0.05)
    wires = feed.total_wires()
    first = feed.children[0]
    h.segment(feed, first, wires, [], h.connector_text("Incoming supply X0", wires))
    h.emit_tree(first)
    return h


def door_loop():
    """A door harness drawn with a closed ring: the layout must refuse it."""
    h = Harness("Door harness with a loop", "Front door harness in which the lock branch and the "
                "window branch were both joined to the speaker junction, closing a loop.", 201, 5)
    body = Node("body", device="Door inline", wires=0)
    body.x, body.y = 0.0, 0.0
    hinge = body.add(Node("hinge"))
    hinge.x, hinge.y = 0.18, 0.02
    upper = hinge.add(Node("upper"))
    upper.x, upper.y = 0.42, 0.20
    lower = hinge.add(Node("lower"))
    lower.x, lower.y = 0.40, -0.15
    for parent, name, x, y, wires in [(upper, "Mirror", 0.50, 0.40, 6), (upper, "Window switch", 0.70, 0.24, 8),
                                      (lower, "Speaker", 0.55, -0.30, 2), (lower, "Door lock", 0.78, -0.10, 5)]:
        d = parent.add(device(name, wires))
        d.x, d.y = x, y
    h.segment(body, hinge, body.total_wires(), [], h.connector_text("Door inline", 21))
    h.emit_tree(hinge)
    # The stray connection that closes the ring upper - hinge - lower - upper.
    h.segment(lower, upper, 4, [(0.62, 0.02)])
    return h


def rear_disjoint():
    """A rear harness whose number-plate branch was never joined to the rest."""
    h = Harness("Rear harness in two pieces", "Tailgate harness whose number-plate lamp branch was "
                "drawn apart from the rest: the sketch is in two pieces.", 301, 7)
    inline = Node("inline", device="Tailgate inline", wires=0)
    inline.x, inline.y = 0.0, 0.0
    j1 = inline.add(Node("j1"))
    j1.x, j1.y = 0.25, 0.05
    j2 = j1.add(Node("j2"))
    j2.x, j2.y = 0.60, 0.05
    for parent, name, x, y, wires in [(j1, "Rear wiper motor", 0.30, 0.30, 4),
                                      (j1, "Tailgate lock", 0.35, -0.20, 5),
                                      (j2, "Rear lamp left", 0.70, 0.30, 4),
                                      (j2, "Rear lamp right", 0.95, 0.05, 4),
                                      (j2, "Reversing camera", 0.75, -0.22, 4)]:
        d = parent.add(device(name, wires))
        d.x, d.y = x, y
    h.segment(inline, j1, inline.total_wires(), [], h.connector_text("Tailgate inline", 21))
    h.emit_tree(j1)
    # The separate piece: a short branch to the number-plate lamps.
    split = Node("plate")
    split.x, split.y = 0.45, -0.45
    left = device("Number plate lamp left", 2)
    left.x, left.y = 0.35, -0.55
    right = device("Number plate lamp right", 2)
    right.x, right.y = 0.58, -0.56
    h.segment(left, split, 2, [], h.connector_text("Number plate lamp left", 2))
    h.segment(split, right, 2, [], h.connector_text("Number plate lamp right", 2))
    return h


EXAMPLES = [
    ("engine-bay.json", engine_bay),
    ("dashboard.json", dashboard),
    ("machine-cabinet.json", machine_cabinet),
    ("door-loop.json", door_loop),
    ("rear-disjoint.json", rear_disjoint),
]


def main():
    out = sys.argv[1] if len(sys.argv) > 1 else os.path.dirname(os.path.abspath(__file__))
    for file_name, make in EXAMPLES:
        harness = make()
        path = os.path.join(out, file_name)
        tmp = path + ".tmp"
        with open(tmp, "w", encoding="utf-8") as f:
            json.dump(harness.document(), f, indent=1, ensure_ascii=False)
            f.write("\n")
        os.replace(tmp, path)
        print("%s: %d segments, %d lines" % (file_name, len(harness.segments),
                                              sum(len(s["entities"]) for s in harness.segments)))


if __name__ == "__main__":
    main()
