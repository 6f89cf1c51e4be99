#!/usr/bin/env python3
"""Draws the pictures of typical.rrs as PNG files beside this script.

Shapes are signed distances in the units of a picture at one time the resolution; a pixel is covered
by as much as its middle lies inside, so edges on whole units are sharp at every resolution.
"""
import math
import pathlib
import struct
import zlib

HERE = pathlib.Path(__file__).parent

INK = (0x33, 0x37, 0x3D)
LINE = (0x6F, 0x76, 0x80)
TILE = (0xF4, 0xF5, 0xF7)
WHITE = (0xFF, 0xFF, 0xFF)
BLUE = (0x2F, 0x7F, 0xD1)
DEEP = (0x1C, 0x52, 0x96)
RED = (0xD6, 0x45, 0x41)
DARK_RED = (0x9E, 0x2B, 0x28)
ORANGE = (0xFF, 0xA6, 0x2B)
PALE = (0xDD, 0xE9, 0xF6)
GOLD = (0xF2, 0xC1, 0x4E)
DARK_GOLD = (0xA8, 0x77, 0x16)
GREEN = (0x2E, 0x9E, 0x5B)


def rounded(left, top, right, bottom, radius):
    cx, cy = (left + right) / 2, (top + bottom) / 2
    hx, hy = (right - left) / 2 - radius, (bottom - top) / 2 - radius

    def distance(x, y):
        dx, dy = abs(x - cx) - hx, abs(y - cy) - hy
        outside = math.hypot(max(dx, 0), max(dy, 0))
        return outside + min(max(dx, dy), 0) - radius

    return distance


def frame(left, top, right, bottom, radius, width):
    """The ring of the given width just inside a rounded rectangle."""
    outer = rounded(left, top, right, bottom, radius)
    inner = rounded(left + width, top + width, right - width, bottom - width,
                    max(radius - width, 0))
    return lambda x, y: max(outer(x, y), -inner(x, y))


def ellipse(cx, cy, rx, ry):
    def distance(x, y):
        px, py = (x - cx) / rx, (y - cy) / ry
        length = math.hypot(px, py)
        if length < 1e-6:
            return -min(rx, ry)
        slope = math.hypot(px / rx, py / ry)
        return length * (length - 1) / slope

    return distance


def stroke(points, width):
    """A line through the points with round ends."""
    def distance(x, y):
        best = math.inf
        for (ax, ay), (bx, by) in zip(points, points[1:]):
            dx, dy = bx - ax, by - ay
            t = max(0, min(1, ((x - ax) * dx + (y - ay) * dy) / (dx * dx + dy * dy or 1)))
            best = min(best, math.hypot(x - ax - t * dx, y - ay - t * dy))
        return best - width / 2

    return distance


def arc(cx, cy, radius, first, last, width):
    """A part of a circle; angles in degrees, clockwise from the right."""
    steps = 24
    angles = [math.radians(first + (last - first) * n / steps) for n in range(steps + 1)]
    return stroke([(cx + radius * math.cos(a), cy + radius * math.sin(a)) for a in angles], width)


def polygon(points):
    """A filled convex polygon whose corners stand clockwise."""
    def distance(x, y):
        sides = zip(points, points[1:] + points[:1])
        return max(((x - ax) * (by - ay) - (y - ay) * (bx - ax)) / math.hypot(bx - ax, by - ay)
                   for (ax, ay), (bx, by) in sides)

    return distance


def union(*shapes):
    return lambda x, y: min(shape(x, y) for shape in shapes)


class Canvas:
    def __init__(self, width, height, scale):
        self.width, self.height, self.scale = width * scale, height * scale, scale
        self.pixels = [(0.0, 0.0, 0.0, 0.0)] * (self.width * self.height)  # premultiplied

    def draw(self, shape, color, bottom=None, dx=0, dy=0):
        """Fills the shape, moved by dx and dy, with a colour, or from one to another downwards."""
        for row in range(self.height):
            part = (row + 0.5) / self.height if bottom else 0
            ink = [c + (e - c) * part for c, e in zip(color, bottom or color)]
            y = (row + 0.5) / self.scale - dy
            for column in range(self.width):
                x = (column + 0.5) / self.scale - dx
                cover = 0.5 - shape(x, y) * self.scale
                if cover <= 0:
                    continue
                cover = min(cover, 1)
                at = row * self.width + column
                old = self.pixels[at]
                self.pixels[at] = tuple(
                    new * cover + had * (1 - cover) for new, had in zip(ink + [255.0], old))

    def save(self, name):
        rows = bytearray()
        for row in range(self.height):
            rows.append(0)
            for red, green, blue, alpha in self.pixels[row * self.width:(row + 1) * self.width]:
                part = alpha / 255 or 1
                rows += bytes(round(min(c / part, 255)) for c in (red, green, blue))
                rows.append(round(alpha))
        header = struct.pack(">IIBBBBB", self.width, self.height, 8, 6, 0, 0, 0)
        data = b"\x89PNG\r\n\x1a\n"
        for kind, body in ((b"IHDR", header), (b"IDAT", zlib.compress(bytes(rows), 9)), (b"IEND", b"")):
            data += struct.pack(">I", len(body)) + kind + body
            data += struct.pack(">I", zlib.crc32(kind + body))
        (HERE / name).write_bytes(data)


def tile(canvas, fill, border):
    canvas.draw(rounded(0, 0, 16, 16, 3), border)
    canvas.draw(rounded(1, 1, 15, 15, 2), fill)


def close_button(canvas):
    tile(canvas, RED, DARK_RED)
    canvas.draw(union(stroke([(5, 5), (11, 11)], 1.7), stroke([(11, 5), (5, 11)], 1.7)), WHITE)


def minimize_button(canvas):
    tile(canvas, TILE, LINE)
    canvas.draw(rounded(4, 10, 12, 12, 0), INK)


def maximize_button(canvas):
    tile(canvas, TILE, LINE)
    canvas.draw(frame(4, 4, 12, 12, 0.5, 1), INK)
    canvas.draw(rounded(4, 4, 12, 6, 0.5), INK)


def restore_button(canvas):
    tile(canvas, TILE, LINE)
    canvas.draw(frame(6, 4, 12, 10, 0.5, 1), INK)
    canvas.draw(rounded(6, 4, 12, 6, 0.5), INK)
    canvas.draw(rounded(4, 6, 10, 12, 0.5), TILE)
    canvas.draw(frame(4, 6, 10, 12, 0.5, 1), INK)
    canvas.draw(rounded(4, 6, 10, 8, 0.5), INK)


def check_marks(canvas):
    canvas.draw(rounded(2, 2, 14, 14, 2.5), LINE)
    canvas.draw(rounded(3, 3, 13, 13, 1.5), WHITE)
    for left in (16, 32):
        canvas.draw(rounded(2, 2, 14, 14, 2.5), DEEP, dx=left)
        canvas.draw(rounded(3, 3, 13, 13, 1.5), BLUE, dx=left)
    canvas.draw(rounded(5, 7, 11, 9, 0), WHITE, dx=16)
    canvas.draw(stroke([(5, 8.3), (7.2, 10.5), (11, 5.8)], 1.8), WHITE, dx=32)


def drum(canvas, cx, top, bottom, rx, ry, ring):
    """A drum of disks, as databases are drawn, with rings at the given heights."""
    canvas.draw(union(rounded(cx - rx, top, cx + rx, bottom, 0), ellipse(cx, top, rx, ry),
                      ellipse(cx, bottom, rx, ry)), WHITE)
    canvas.draw(ellipse(cx, top, rx, ry), PALE)
    for at in ring:
        arc = [(cx + rx * math.cos(a * math.pi / 16), at + ry * math.sin(a * math.pi / 16))
               for a in range(17)]
        canvas.draw(stroke(arc, max(1.1, rx / 9)), BLUE)


def small_icon(canvas):
    canvas.draw(rounded(0, 0, 16, 16, 3.5), BLUE, DEEP)
    drum(canvas, 8, 4.5, 11.5, 5, 2, (4.6, 8.1))


def icon(canvas, size):
    unit = size / 32
    canvas.draw(rounded(0, 0, size, size, 6.5 * unit), BLUE, DEEP)
    drum(canvas, 14 * unit, 8.5 * unit, 22.5 * unit, 9 * unit, 3.2 * unit,
         (8.6 * unit, 13.4 * unit, 18.1 * unit))
    trend = [(x * unit, y * unit) for x, y in ((12, 26.5), (17, 20.5), (21, 23.5), (27.5, 14.5))]
    canvas.draw(stroke(trend, 4.4 * unit), DEEP)
    canvas.draw(stroke(trend, 2.4 * unit), ORANGE)
    canvas.draw(ellipse(*trend[-1], 2.3 * unit, 2.3 * unit), ORANGE)


def open_tool(canvas):
    canvas.draw(union(rounded(1, 3, 9, 9, 1.5), rounded(1, 5, 19, 17, 1.5)), DARK_GOLD)
    canvas.draw(union(rounded(2, 4, 8, 9, 0.8), rounded(2, 6, 18, 16, 0.8)), GOLD)
    canvas.draw(rounded(2, 8, 18, 9, 0), DARK_GOLD)


def connect_tool(canvas):
    canvas.draw(union(rounded(2, 4, 14, 15, 0), ellipse(8, 4.5, 6.6, 3), ellipse(8, 15, 6.6, 3)),
                DEEP)
    drum(canvas, 8, 4.6, 14.8, 5.4, 2.1, (4.8, 9.4))
    canvas.draw(ellipse(14, 14, 5.6, 5.6), WHITE)
    canvas.draw(ellipse(14, 14, 4.9, 4.9), GREEN)
    canvas.draw(union(stroke([(11.5, 14), (16.5, 14)], 1.7), stroke([(14, 11.5), (14, 16.5)], 1.7)),
                WHITE)


def refresh_tool(canvas):
    for turn in (0, 180):
        canvas.draw(arc(10, 10, 6.6, turn + 195, turn + 325, 2.2), GREEN)
        tip = math.radians(turn + 352)
        base = math.radians(turn + 318)
        corners = [(10 + r * math.cos(a), 10 + r * math.sin(a))
                   for r, a in ((10, base), (7, tip), (3.2, base))]
        canvas.draw(polygon(corners), GREEN)


def row_tool(canvas):
    canvas.draw(rounded(5, 2, 19, 18, 1.5), LINE)
    canvas.draw(rounded(6, 3, 18, 17, 0.5), WHITE)
    canvas.draw(rounded(6, 3, 18, 6, 0.5), PALE)
    for top in (6, 13):
        canvas.draw(rounded(6, top, 18, top + 1, 0), LINE)
    canvas.draw(rounded(6, 8, 18, 12, 0), BLUE)
    canvas.draw(polygon([(0.5, 6), (5, 10), (0.5, 14)]), ORANGE)
    canvas.draw(stroke([(0.5, 6), (5, 10), (0.5, 14), (0.5, 6)], 1), DARK_GOLD)


def sql_tool(canvas):
    canvas.draw(rounded(1, 2, 19, 18, 2), DEEP)
    canvas.draw(rounded(2, 3, 18, 17, 1), WHITE)
    canvas.draw(rounded(2, 3, 18, 6, 0), BLUE)
    canvas.draw(stroke([(5, 9), (8, 11.5), (5, 14)], 1.6), INK)
    canvas.draw(rounded(10, 13, 15.5, 14.6, 0), INK)


def settings_tool(canvas):
    teeth = []
    for n in range(8):
        x, y = math.cos(math.pi * n / 4), math.sin(math.pi * n / 4)
        teeth.append(stroke([(10 + 5 * x, 10 + 5 * y), (10 + 7.4 * x, 10 + 7.4 * y)], 3.2))
    gear = union(ellipse(10, 10, 6.4, 6.4), *teeth)
    hole = ellipse(10, 10, 2.8, 2.8)
    canvas.draw(lambda x, y: max(gear(x, y), -hole(x, y)), LINE)


PICTURES = (
    ("close", 16, 16, (1, 2, 3), close_button),
    ("minimize", 16, 16, (1, 2, 3), minimize_button),
    ("maximize", 16, 16, (1, 2, 3), maximize_button),
    ("restore", 16, 16, (1, 2, 3), restore_button),
    ("checks", 48, 16, (1, 2, 3), check_marks),
    ("explorer16", 16, 16, (1, 2, 3), small_icon),
    ("explorer32", 32, 32, (1, 2, 3), lambda canvas: icon(canvas, 32)),
    ("explorer64", 64, 64, (1, 2, 3), lambda canvas: icon(canvas, 64)),
    ("open20", 20, 20, (1, 2, 3), open_tool),
    ("connect20", 20, 20, (1, 2, 3), connect_tool),
    ("refresh20", 20, 20, (1, 2, 3), refresh_tool),
    ("row20", 20, 20, (1, 2, 3), row_tool),
    ("sql20", 20, 20, (1, 2, 3), sql_tool),
    ("settings20", 20, 20, (1, 2, 3), settings_tool),
)


def main():
    for name, width, height, scales, paint in PICTURES:
        for scale in scales:
            canvas = Canvas(width, height, scale)
            paint(canvas)
            canvas.save(name + ("" if scale == 1 else f"@{scale}x") + ".png")


if __name__ == "__main__":
    main()
