"""Pictures for the sample files: small holiday scenes drawn from shapes. The same arguments give the same pixels."""

import math
import random

from PIL import Image, ImageDraw, ImageFilter, ImageFont

OVERSAMPLING = 2  # drawn larger and scaled down, which smooths the edges


def font(size):
    return ImageFont.truetype("DejaVuSans-Bold.ttf", size, layout_engine=ImageFont.Layout.BASIC)


class Canvas:
    """Drawing with coordinates from 0 to 1, so that a scene fits every size and orientation."""

    def __init__(self, size, sky, seed):
        self.width, self.height = (side * OVERSAMPLING for side in size)
        self.size = size
        self.random = random.Random(seed)
        self.image = self._gradient(*sky)
        self.draw = ImageDraw.Draw(self.image, "RGBA")

    def _gradient(self, top, bottom):
        column = Image.new("RGB", (1, 256))
        for y in range(256):
            column.putpixel((0, y), tuple(round(a + (b - a) * y / 255) for a, b in zip(top, bottom)))
        return column.resize((self.width, self.height), Image.Resampling.BILINEAR)

    def _points(self, points):
        return [(x * self.width, y * self.height) for x, y in points]

    def polygon(self, points, colour):
        self.draw.polygon(self._points(points), fill=colour)

    def disc(self, x, y, radius, colour):
        r = radius * min(self.width, self.height)
        cx, cy = x * self.width, y * self.height
        self.draw.ellipse((cx - r, cy - r, cx + r, cy + r), fill=colour)

    def box(self, left, top, right, bottom, colour):
        self.draw.rectangle(self._points([(left, top), (right, bottom)]), fill=colour)

    def line(self, points, colour, width=0.004):
        self.draw.line(self._points(points), fill=colour, width=max(1, round(width * self.width)), joint="curve")

    def glow(self, x, y, radius, colour):
        for step in range(8, 0, -1):
            self.disc(x, y, radius * step / 8, (*colour, 18))

    def ridge(self, base, height, waves, colour):
        """A hilly silhouette from `base` downwards: sums of sines, `waves` of them across the picture."""
        phases = [self.random.uniform(0, math.tau) for _ in range(3)]
        points = [(0, 1)]
        for step in range(101):
            x = step / 100
            y = sum(math.sin(x * math.tau * waves * (k + 1) + p) / (k + 1) for k, p in enumerate(phases))
            points.append((x, base - height * y / 2))
        self.polygon([*points, (1, 1)], colour)

    def title(self, text):
        """A caption in the lower left corner, as on a postcard."""
        face = font(round(min(self.width, self.height) * 0.065))
        x, y = self.width * 0.04, self.height * 0.90
        self.draw.text((x + 2, y + 2), text, font=face, fill=(0, 0, 0, 150))
        self.draw.text((x, y), text, font=face, fill=(255, 255, 255, 235))

    def finish(self, soften=0):
        picture = self.image.resize(self.size, Image.Resampling.LANCZOS)
        return picture.filter(ImageFilter.GaussianBlur(soften)) if soften else picture


def beach(size, seed=1):
    c = Canvas(size, ((96, 174, 230), (214, 238, 247)), seed)
    c.disc(0.78, 0.2, 0.09, (255, 244, 190))
    c.box(0, 0.52, 1, 0.74, (31, 122, 160))
    for row in range(5):
        y = 0.55 + row * 0.04
        c.line([(x / 20, y + 0.006 * math.sin(x + row)) for x in range(21)], (160, 215, 230, 120))
    c.polygon([(0, 0.74), (0.4, 0.7), (1, 0.76), (1, 1), (0, 1)], (236, 212, 160))
    for x, colour in ((0.22, (214, 64, 69)), (0.55, (247, 183, 49))):
        c.line([(x, 0.66), (x + 0.02, 0.9)], (120, 90, 60), 0.008)
        c.polygon([(x - 0.13, 0.7), (x - 0.06, 0.62), (x + 0.01, 0.59), (x + 0.09, 0.62), (x + 0.14, 0.68)], colour)
    return c


def mountains(size, seed=2):
    c = Canvas(size, ((74, 124, 190), (236, 226, 205)), seed)
    for base, height, waves, colour in ((0.5, 0.22, 1.3, (134, 152, 184)), (0.62, 0.2, 1.7, (92, 116, 146))):
        c.ridge(base, height, waves, colour)
    c.polygon([(0.28, 0.72), (0.52, 0.2), (0.8, 0.72)], (110, 118, 136))
    c.polygon([(0.44, 0.37), (0.52, 0.2), (0.61, 0.37), (0.56, 0.34), (0.52, 0.4), (0.48, 0.35)], (246, 249, 252))
    c.ridge(0.74, 0.08, 2.1, (62, 104, 72))
    for _ in range(26):
        x, y = c.random.random(), c.random.uniform(0.8, 0.96)
        c.polygon([(x - 0.018, y), (x, y - 0.12), (x + 0.018, y)], (32, 70, 50))
    return c


def city(size, seed=3, sky=((18, 20, 52), (88, 62, 110)), window=(255, 214, 120)):
    c = Canvas(size, sky, seed)
    for _ in range(40):
        c.disc(c.random.random(), c.random.uniform(0, 0.4), 0.002, (255, 255, 255, 180))
    x = -0.02
    while x < 1:
        width, top = c.random.uniform(0.06, 0.12), c.random.uniform(0.3, 0.66)
        shade = c.random.randint(20, 46)
        c.box(x, top, x + width, 0.86, (shade, shade, shade + 22))
        for row in range(int((0.84 - top) / 0.045)):
            for column in range(3):
                if c.random.random() < 0.5:
                    left, upper = x + width * (0.15 + column * 0.27), top + 0.025 + row * 0.045
                    c.box(left, upper, left + width * 0.14, upper + 0.02, window)
        x += width + 0.008
    c.box(0, 0.86, 1, 1, (14, 20, 44))
    for _ in range(30):
        x, y = c.random.random(), c.random.uniform(0.88, 0.98)
        c.line([(x, y), (x + 0.04, y)], (*window, 90))
    return c


def fireworks(size, seed=4):
    c = city(size, seed, sky=((6, 8, 30), (46, 30, 70)))
    for x, y, colour in ((0.25, 0.22, (255, 110, 90)), (0.6, 0.16, (120, 200, 255)), (0.84, 0.3, (255, 220, 110))):
        c.glow(x, y, 0.2, colour)
        for ray in range(22):
            angle, reach = math.tau * ray / 22, 0.15 * c.random.uniform(0.75, 1)
            tip = (x + reach * math.cos(angle) * c.height / c.width, y + reach * math.sin(angle))
            c.line([(x, y), tip], (*colour, 210), 0.003)
            c.disc(*tip, 0.006, colour)
    return c


def snow(size, seed=5):
    c = Canvas(size, ((150, 170, 205), (232, 238, 248)), seed)
    c.ridge(0.6, 0.1, 1.1, (196, 208, 228))
    for _ in range(14):
        x, y = c.random.random(), c.random.uniform(0.6, 0.74)
        for k in range(3):
            c.polygon([(x - 0.05 + k * 0.012, y - k * 0.06), (x, y - 0.11 - k * 0.06),
                       (x + 0.05 - k * 0.012, y - k * 0.06)], (54 + k * 30, 92 + k * 26, 84 + k * 30))
    c.ridge(0.78, 0.05, 0.7, (250, 252, 255))
    c.disc(0.3, 0.86, 0.085, (222, 230, 244))
    c.disc(0.3, 0.74, 0.06, (232, 238, 248))
    c.box(0.27, 0.66, 0.33, 0.7, (46, 46, 56))
    for _ in range(90):
        c.disc(c.random.random(), c.random.random(), c.random.uniform(0.002, 0.006), (255, 255, 255, 220))
    return c


def dunes(size, seed=6):
    c = Canvas(size, ((236, 164, 92), (250, 220, 166)), seed)
    c.disc(0.3, 0.3, 0.1, (255, 238, 196))
    for k, colour in enumerate(((206, 140, 78), (188, 116, 60), (160, 92, 46))):
        c.ridge(0.58 + k * 0.13, 0.12, 0.6 + k * 0.3, colour)
    for k in range(4):  # a caravan
        x, y = 0.5 + k * 0.1, 0.585 + 0.012 * k
        c.disc(x, y, 0.02, (70, 42, 30))
        c.disc(x + 0.02, y - 0.035, 0.01, (70, 42, 30))
        for leg in (-0.012, 0.008):
            c.line([(x + leg, y), (x + leg, y + 0.055)], (70, 42, 30), 0.005)
    return c


def balloons(size, seed=7):
    c = Canvas(size, ((92, 160, 226), (252, 222, 196)), seed)
    c.ridge(0.86, 0.1, 1.2, (150, 120, 104))
    for x, y, r, a, b in ((0.24, 0.3, 0.13, (222, 70, 60), (250, 206, 90)), (0.58, 0.44, 0.16, (48, 110, 180),
                          (240, 240, 240)), (0.84, 0.24, 0.08, (90, 160, 90), (246, 226, 120))):
        side = min(c.width, c.height)
        u, v = r * side / c.width, r * side / c.height
        c.polygon([(x - u * 0.72, y + v * 0.7), (x + u * 0.72, y + v * 0.7), (x + u * 0.15, y + v * 1.5),
                   (x - u * 0.15, y + v * 1.5)], a)
        for part, colour in ((1, a), (0.62, b), (0.25, a)):
            c.disc(x, y, r * part, colour)
        c.box(x - u * 0.14, y + v * 1.6, x + u * 0.14, y + v * 1.85, (110, 74, 44))
    return c


def lighthouse(size, seed=8):
    c = Canvas(size, ((44, 64, 120), (246, 170, 128)), seed)
    c.box(0, 0.66, 1, 1, (40, 76, 116))
    c.glow(0.34, 0.26, 0.25, (255, 240, 170))
    c.polygon([(0.1, 0.78), (0.24, 0.64), (0.46, 0.66), (0.62, 0.8), (0.7, 1), (0, 1)], (64, 58, 62))
    for k in range(5):
        top, bottom = 0.32 + k * 0.068, 0.32 + (k + 1) * 0.068
        w0, w1 = 0.035 + k * 0.005, 0.035 + (k + 1) * 0.005
        c.polygon([(0.34 - w0, top), (0.34 + w0, top), (0.34 + w1, bottom), (0.34 - w1, bottom)],
                  (206, 60, 56) if k % 2 == 0 else (242, 240, 236))
    c.box(0.31, 0.25, 0.37, 0.32, (255, 236, 150))
    c.polygon([(0.3, 0.25), (0.34, 0.19), (0.38, 0.25)], (58, 44, 52))
    return c


def tiles(size, seed=9):
    c = Canvas(size, ((240, 240, 232), (240, 240, 232)), seed)
    n = 6
    for row in range(n):
        for column in range(n):
            x, y = (column + 0.5) / n, (row + 0.5) / n
            blue, other = (38, 84, 158), (228, 178, 60) if (row + column) % 2 else (72, 134, 190)
            c.polygon([(x, y - 0.45 / n), (x + 0.45 / n, y), (x, y + 0.45 / n), (x - 0.45 / n, y)], blue)
            c.disc(x, y, 0.24 / n, other)
            c.disc(x, y, 0.11 / n, (250, 250, 246))
    return c


SCENES = {scene.__name__: scene for scene in
          (beach, mountains, city, fireworks, snow, dunes, balloons, lighthouse, tiles)}
