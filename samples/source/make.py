#!/usr/bin/env python3
"""Makes the sample pictures anew. Needs Pillow and the Liberation fonts (python3-pil, fonts-liberation2).

Everything is computed here: terrain, light, letters and shapes, from fixed seeds, so that a second run gives the same
pictures.
"""
import math
import os
import random

from PIL import Image, ImageDraw, ImageFilter, ImageFont

HERE = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
FONTS = "/usr/share/fonts/truetype/liberation2/LiberationSans-%s.ttf"


def save(image, name, **options):
    image.save(os.path.join(HERE, name), **options)


def font(size, style="Regular"):
    return ImageFont.truetype(FONTS % style, size)


def mix(a, b, t):
    return tuple(int(round(x + (y - x) * t)) for x, y in zip(a, b))


class Noise:
    """Value noise: random heights on a lattice, eased between."""

    def __init__(self, seed):
        rng = random.Random(seed)
        self.table = [rng.random() for _ in range(4096)]

    def lattice(self, x, y):
        return self.table[(x * 73 + y * 1031 + (x * y) % 17 * 311) & 4095]

    def at(self, x, y):
        ix, iy = math.floor(x), math.floor(y)
        fx, fy = x - ix, y - iy
        fx, fy = fx * fx * (3 - 2 * fx), fy * fy * (3 - 2 * fy)
        top = self.lattice(ix, iy) * (1 - fx) + self.lattice(ix + 1, iy) * fx
        low = self.lattice(ix, iy + 1) * (1 - fx) + self.lattice(ix + 1, iy + 1) * fx
        return top * (1 - fy) + low * fy

    def cloud(self, x, y, octaves=5):
        total, weight, scale = 0.0, 0.5, 1.0
        for _ in range(octaves):
            total += self.at(x * scale, y * scale) * weight
            weight, scale = weight * 0.5, scale * 2.03
        return total


def mountain_lake(width=480, height=320):
    """Evening sky, three ranges in the haze, and their reflection: gradients and fine texture as in a photograph."""
    noise = Noise(7)
    image = Image.new("RGB", (width, height))
    pixels = image.load()
    shore = int(height * 0.66)
    ridges = []
    for layer, (base, rough) in enumerate(((0.40, 0.16), (0.50, 0.14), (0.60, 0.10))):
        ridges.append([int(height * (base + rough * (noise.cloud(x / 90 + layer * 50, layer * 9.1) - 0.5) * 2))
                       for x in range(width)])
    for x in range(width):
        for y in range(shore):
            t = y / shore
            sky = mix((46, 62, 120), (250, 176, 110), t ** 1.3)
            cloud = max(0.0, noise.cloud(x / 70, y / 28) - 0.48) * 2.2
            colour = mix(sky, (255, 226, 200), min(1.0, cloud))
            for layer in range(3):
                ridge = ridges[layer][x]
                if y >= ridge:
                    rock = noise.cloud(x / 9, y / 9 + layer * 31, 4)
                    haze = 0.62 - 0.22 * layer
                    ground = mix((38, 44, 58), (120, 112, 96), rock)
                    colour = mix(ground, (214, 150, 128), haze)
            pixels[x, y] = colour
        for y in range(shore, height):
            depth = (y - shore) / (height - shore)
            ripple = int(3 * math.sin(y * 1.7) * depth + 6 * (noise.at(x / 12, y / 2) - 0.5) * depth)
            mirrored = pixels[min(width - 1, max(0, x + ripple)) if x + ripple <= x else x,
                              max(0, shore - 1 - int((y - shore) * 1.6))]
            pixels[x, y] = mix(mirrored, (28, 44, 72), 0.25 + 0.35 * depth)
    return image


def fruit(width=360, height=270):
    """Lit spheres on a table: soft shadows and skin-like gradients."""
    noise = Noise(21)
    image = Image.new("RGB", (width, height))
    pixels = image.load()
    spheres = ((110, 150, 66, (196, 60, 44)), (225, 168, 52, (226, 150, 52)), (290, 120, 40, (120, 152, 60)))
    for y in range(height):
        for x in range(width):
            wall = mix((206, 196, 184), (150, 138, 132), x / width)
            wood = mix((126, 82, 52), (164, 116, 74), noise.cloud(x / 60, y / 5, 4))
            colour = wood if y > 170 else wall
            for cx, cy, r, _ in spheres:
                sx, sy = (x - cx - r * 0.35) / (r * 1.15), (y - cy - r * 0.92) / (r * 0.28)
                d = sx * sx + sy * sy
                if d < 1 and y > 170:
                    colour = mix(colour, (30, 20, 16), 0.7 * (1 - d))
            for cx, cy, r, skin in spheres:
                dx, dy = (x - cx) / r, (y - cy) / r
                d = dx * dx + dy * dy
                if d < 1:
                    dz = math.sqrt(1 - d)
                    light = max(0.0, -0.5 * dx - 0.6 * dy + 0.62 * dz)
                    shade = mix((24, 12, 14), skin, min(1.0, 0.18 + light))
                    spot = noise.cloud(x / 7, y / 7, 3)
                    shade = mix(shade, mix(skin, (255, 240, 200), 0.3), 0.25 * spot * light)
                    shine = max(0.0, light - 0.86) * 6
                    colour = mix(shade, (255, 252, 244), min(1.0, shine))
            pixels[x, y] = colour
    return image.filter(ImageFilter.GaussianBlur(0.6))


def logo(size=160):
    """A badge with soft edges on nothing: alpha from 0 to 255."""
    big = Image.new("RGBA", (size * 4, size * 4), (0, 0, 0, 0))
    draw = ImageDraw.Draw(big)
    draw.ellipse((24, 24, size * 4 - 24, size * 4 - 24), fill=(24, 92, 148, 255))
    draw.ellipse((64, 64, size * 4 - 64, size * 4 - 64), outline=(255, 255, 255, 255), width=14)
    draw.text((size * 2, size * 2), "Zf", font=font(280, "Bold"), fill=(255, 206, 84, 255), anchor="mm")
    badge = big.resize((size, size), Image.LANCZOS)
    shadow = Image.new("RGBA", (size + 16, size + 16), (0, 0, 0, 0))
    shadow.paste((0, 0, 0, 150), (10, 10, 10 + size, 10 + size), badge.getchannel("A"))
    shadow = shadow.filter(ImageFilter.GaussianBlur(4))
    shadow.alpha_composite(badge)
    return shadow


def chart(width=320, height=200):
    """Flat colours, thin lines and text."""
    image = Image.new("RGB", (width, height), (250, 250, 252))
    draw = ImageDraw.Draw(image)
    draw.text((12, 8), "Frames per second", font=font(15, "Bold"), fill=(40, 44, 52))
    for step in range(5):
        y = 40 + step * 32
        draw.line((36, y, width - 10, y), fill=(216, 220, 228))
        draw.text((8, y - 7), str(120 - step * 30), font=font(11), fill=(110, 116, 128))
    colours = ((66, 133, 190), (230, 126, 60), (90, 168, 100), (160, 100, 180), (200, 70, 80))
    for i, value in enumerate((62, 97, 44, 118, 81)):
        x = 50 + i * 52
        draw.rectangle((x, 168 - value, x + 34, 168), fill=colours[i])
        draw.text((x + 17, 172), "ABCDE"[i], font=font(12), fill=(40, 44, 52), anchor="ma")
    return image


def line_art(width=300, height=300):
    """Curves without grey, for one bit a pixel."""
    image = Image.new("1", (width, height), 1)
    draw = ImageDraw.Draw(image)
    for k in range(1, 8):
        points = []
        for step in range(721):
            a = math.radians(step)
            r = 18 * k * (1 + 0.14 * math.cos(6 * a + k))
            points.append((width / 2 + r * math.cos(a), height / 2 + r * math.sin(a)))
        draw.line(points, fill=0, width=1 + k % 2)
    draw.rectangle((0, 0, width - 1, height - 1), outline=0)
    return image


def spinner(frames=12, size=96):
    """An animation with transparent ground."""
    result = []
    for frame in range(frames):
        image = Image.new("RGBA", (size * 4, size * 4), (0, 0, 0, 0))
        draw = ImageDraw.Draw(image)
        for dot in range(8):
            a = math.tau * (dot / 8 + frame / frames / 8)
            strength = (dot / 8 + frame / frames) % 1
            x, y = size * 2 + size * 1.4 * math.cos(a * 1), size * 2 + size * 1.4 * math.sin(a)
            r = 18 + 26 * strength
            draw.ellipse((x - r, y - r, x + r, y + r), fill=mix((188, 210, 232), (18, 88, 160), strength) + (255,))
        small = image.resize((size, size), Image.LANCZOS)
        small.putalpha(small.getchannel("A").point(lambda a: 255 if a > 127 else 0))
        result.append(small)
    return result


def bouncing_ball(frames=16, width=200, height=120):
    """A film on a still ground: little changes from frame to frame."""
    result = []
    for frame in range(frames):
        image = Image.new("RGB", (width, height), (236, 240, 244))
        draw = ImageDraw.Draw(image)
        for stripe in range(0, width, 20):
            draw.line((stripe, 100, stripe + 10, 100), fill=(120, 128, 140), width=3)
        t = frame / frames
        x, y = 20 + 160 * t, 88 - abs(math.sin(t * math.tau)) * 70
        draw.ellipse((x - 12, y - 12, x + 12, y + 12), fill=(214, 64, 52), outline=(110, 24, 20))
        draw.ellipse((x - 7, y - 8, x - 1, y - 2), fill=(250, 190, 180))
        result.append(image)
    return result


def icon_sheet():
    """Sixteen colours, four bits a pixel."""
    image = Image.new("P", (128, 96), 15)
    colours = [(0, 0, 0), (128, 0, 0), (0, 128, 0), (128, 128, 0), (0, 0, 128), (128, 0, 128), (0, 128, 128),
               (192, 192, 192), (128, 128, 128), (255, 0, 0), (0, 255, 0), (255, 255, 0), (0, 0, 255), (255, 0, 255),
               (0, 255, 255), (255, 255, 255)]
    image.putpalette([c for colour in colours for c in colour])
    draw = ImageDraw.Draw(image)
    for i in range(12):
        x, y = 4 + i % 4 * 32, 4 + i // 4 * 32
        draw.rectangle((x, y, x + 23, y + 23), fill=7, outline=8)
        draw.rectangle((x + 5, y + 5, x + 18, y + 18), fill=i + 1, outline=0)
        draw.line((x + 5, y + 18, x + 18, y + 5), fill=15 if i < 8 else 0)
    return image


def main():
    lake = mountain_lake()
    save(lake, "lake.jpg", quality=88, dpi=(150, 150))
    save(fruit(), "fruit.jpg", quality=85)
    save(lake.crop((120, 60, 360, 260)).convert("L"), "ridge.pgm")
    save(lake.resize((240, 160), Image.LANCZOS), "lake-small.ppm")
    save(logo(), "logo.png", optimize=True)
    save(chart(), "chart.png", optimize=True, dpi=(96, 96))
    save(chart().quantize(32, dither=0), "chart-indexed.png", optimize=True)
    save(line_art(), "curves.png", optimize=True)
    save(line_art(200, 200), "curves-small.pbm")
    save(icon_sheet().convert("RGB").quantize(16, dither=0), "icons.bmp")
    pages = [lake.crop((x, 40, x + 160, 160)) for x in (0, 160, 320)]
    save(pages[0], "pages.tif", save_all=True, append_images=pages[1:], compression="tiff_lzw", dpi=(100, 100))
    frames = spinner()
    save(frames[0], "spinner.gif", save_all=True, append_images=frames[1:], duration=80, loop=0, disposal=2)
    frames = bouncing_ball()
    save(frames[0], "ball.gif", save_all=True, append_images=frames[1:], duration=50, loop=0)


if __name__ == "__main__":
    main()
