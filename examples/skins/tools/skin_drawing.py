"""Drawing helpers for the sample skin generator: anti-aliased shapes, gradients, soft lights and spaced text
on Pillow images. Everything here is deterministic for a given Pillow version and font file."""

import io
import os
import sys

from PIL import Image, ImageChops, ImageDraw, ImageFont

FONT_DIRS = ["/usr/share/fonts/truetype/dejavu", "/usr/share/fonts/dejavu"]
SS = 4  # supersampling factor for anti-aliased shapes



def font(name, size):
    for d in FONT_DIRS:
        path = os.path.join(d, name)
        if os.path.exists(path):
            return ImageFont.truetype(path, size, layout_engine=ImageFont.Layout.BASIC)
    sys.exit("make_sample_skin: font %s not found (install fonts-dejavu-core)" % name)


class Rng:
    """A small linear congruential generator, so the scenery never depends on Python's random module."""

    def __init__(self, seed):
        self.state = seed & 0xFFFFFFFF

    def next(self):
        self.state = (self.state * 1664525 + 1013904223) & 0xFFFFFFFF
        return self.state / 4294967296.0

    def range(self, lo, hi):
        return lo + (hi - lo) * self.next()


def rgba(c, a=255):
    return (c[0], c[1], c[2], a) if len(c) == 3 else c


def mix(a, b, t):
    return tuple(int(round(x + (y - x) * t)) for x, y in zip(a, b))


def ramp(stops, t):
    """Colour at t (0..1) of a list of (position, rgba) stops."""
    if t <= stops[0][0]:
        return rgba(stops[0][1])
    for (p0, c0), (p1, c1) in zip(stops, stops[1:]):
        if t <= p1:
            return mix(rgba(c0), rgba(c1), (t - p0) / (p1 - p0) if p1 > p0 else 1.0)
    return rgba(stops[-1][1])


def vgrad(size, stops, top=0, span=None):
    """An RGBA image whose rows follow the stops from row `top` over `span` rows."""
    w, h = size
    span = span or h
    col = Image.new("RGBA", (1, h))
    col.putdata([ramp(stops, (y + 0.5 - top) / span) for y in range(h)])
    return col.resize((w, h), Image.NEAREST)


def hgrad(size, stops):
    w, h = size
    row = Image.new("RGBA", (w, 1))
    row.putdata([ramp(stops, (x + 0.5) / w) for x in range(w)])
    return row.resize((w, h), Image.NEAREST)


def shape(size, draw_fn):
    """An anti-aliased L mask: draw_fn(draw, s) draws in white on a canvas s times larger."""
    w, h = size
    big = Image.new("L", (w * SS, h * SS), 0)
    draw_fn(ImageDraw.Draw(big), SS)
    return big.resize((w, h), Image.BOX)


def rrect(size, box, r):
    x0, y0, x1, y1 = box
    return shape(size, lambda d, s: d.rounded_rectangle([x0 * s, y0 * s, x1 * s - 1, y1 * s - 1], r * s, fill=255))


def ring(size, box, r, width=1.0):
    """The border of a rounded rectangle, `width` pixels wide, inside the box."""
    outer = rrect(size, box, r)
    x0, y0, x1, y1 = box
    inner = rrect(size, (x0 + width, y0 + width, x1 - width, y1 - width), max(r - width, 0))
    return ImageChops.subtract(outer, inner)


def scale_alpha(mask, k):
    return mask.point(lambda v: int(v * k + 0.5))


def paint(img, mask, fill, opacity=1.0, at=(0, 0)):
    """Composite `fill` (a colour or an RGBA image of the mask's size) through `mask` onto img at `at`."""
    layer = Image.new("RGBA", mask.size, rgba(fill)) if not isinstance(fill, Image.Image) else fill.copy()
    alpha = ImageChops.multiply(layer.getchannel("A"), mask)
    if opacity < 1.0:
        alpha = scale_alpha(alpha, opacity)
    layer.putalpha(alpha)
    img.alpha_composite(layer, dest=at)


def glow(size, center, radius, colour, strength=1.0, falloff=2.0):
    """A soft radial light as an RGBA layer of the given size."""
    grad = Image.radial_gradient("L").resize((int(radius * 2), int(radius * 2)), Image.BILINEAR)
    # radial_gradient is 0 in the middle, 181 at the middle of each edge and 255 in the corners: a bump that
    # reaches zero at 181 fits the square exactly, so the light has no visible edge.
    bump = grad.point(lambda v: int(255 * strength * max(0.0, 1.0 - v / 181.0) ** falloff + 0.5))
    mask = Image.new("L", size, 0)
    mask.paste(bump, (int(center[0] - radius), int(center[1] - radius)))
    layer = Image.new("RGBA", size, rgba(colour))
    layer.putalpha(mask)
    return layer


def text_mask(size, xy, text, fnt, tracking=0.0, stroke=0):
    """A mask with the text drawn at xy (top-left of the line box), letters spaced by `tracking` pixels."""
    mask = Image.new("L", size, 0)
    d = ImageDraw.Draw(mask)
    x, y = xy
    for ch in text:
        d.text((x, y), ch, font=fnt, fill=255, stroke_width=stroke, stroke_fill=255)
        x += fnt.getlength(ch) + tracking
    return mask


def text_width(text, fnt, tracking=0.0):
    return sum(fnt.getlength(ch) for ch in text) + tracking * (len(text) - 1)


def text_box(text, fnt, tracking=0.0):
    """Width and the ink's top and bottom (relative to the draw position) of a line of capitals."""
    x0, y0, x1, y1 = fnt.getbbox(text)
    return text_width(text, fnt, tracking), y0, y1


def centred_text(img, box, text, fnt, colour, tracking=0.0, dy=0, shadow=None):
    """Draw text centred (by its ink) in box; shadow = (colour, offset) draws a copy below it first."""
    x0, y0, x1, y1 = box
    tw, top, bottom = text_box(text, fnt, tracking)
    x = x0 + (x1 - x0 - tw) / 2.0
    y = y0 + (y1 - y0 - (bottom - top)) / 2.0 - top + dy
    if shadow:
        paint(img, text_mask(img.size, (x, y + shadow[1]), text, fnt, tracking), shadow[0])
    paint(img, text_mask(img.size, (x, y), text, fnt, tracking), colour)


def save_png(img, path):
    buf = io.BytesIO()
    img.save(buf, "PNG", optimize=True)
    with open(path, "wb") as f:
        f.write(buf.getvalue())

