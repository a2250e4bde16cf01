"""The art of the sample skin "gece-mavisi": the window background, the button states, the gauges, the crest and
the status lamp, with the layout that skin.xml repeats. Coordinates are panel coordinates; the window adds the
transparent margin M."""

import math

from PIL import Image, ImageChops, ImageDraw, ImageFilter

from skin_drawing import (SS, Rng, centred_text, font, glow, hgrad, paint, rgba, ring, rrect, shape, text_box,
                          text_mask, vgrad)

W, H = 920, 580  # the window, transparent margin included
M = 10  # transparent margin around the panel (room for the soft shadow)
PW, PH = W - 2 * M, H - 2 * M  # the visible panel
RADIUS = 16

# Palette: night blues, teal, and a warm amber accent.
NAVY_TOP = (12, 26, 46)
NAVY_BOTTOM = (7, 14, 26)
CARD = (13, 27, 45)
LINE = (33, 64, 90)
TEAL = (47, 208, 196)
TEAL_DIM = (26, 150, 141)
AMBER = (255, 178, 74)
AMBER_DEEP = (214, 110, 30)


# ---------------------------------------------------------------------------------------------------------------
# Layout (panel coordinates; the window coordinates in skin.xml add the margin M)

NEWS_CARD = (20, 188, 600, 436)
STATUS_CARD = (616, 188, 880, 436)
IFRAME = (32, 226, 588, 424)
CARD_HEAD = 34  # height of a card's heading band
LINKS_TOP = 286
LINK_SIZE = (232, 30)
LINK_STEP = 36
BOTTOM_RULE = 450
GAUGE_X, GAUGE_W = 24, 612
MAIN_GAUGE_Y, MAIN_GAUGE_H = 486, 14
SUB_GAUGE_Y, SUB_GAUGE_H = 528, 10
START = (656, 462, 224, 76)
CREST_AT = (24, 44)
WORDMARK_AT = (108, 46)
WINDOW_BUTTON = (32, 26)
CLOSE_AT = (860, 8)
MIN_AT = (826, 8)
NEW_BUTTON = (112, 24)

WORDMARK = "KALDRA"
WORDMARK_FONT = ("DejaVuSerif-Bold.ttf", 62)
WORDMARK_TRACKING = 5.0


def wordmark_metrics():
    fnt = font(*WORDMARK_FONT)
    tw, top, bottom = text_box(WORDMARK, fnt, WORDMARK_TRACKING)
    return fnt, tw, top, bottom


LINKS = [
    # id, image base, label, icon, link_url
    ("URL_SITE", "btn_site", "WEB SİTESİ", "globe", "https://www.kaldra.example/"),
    ("URL_FORUM", "btn_forum", "FORUM", "forum", "https://forum.kaldra.example/"),
    ("URL_DISCORD", "btn_discord", "DISCORD", "chat", "https://discord.kaldra.example/davet"),
    ("URL_SUPPORT", "btn_support", "DESTEK", "help", "URL_SUPPORT"),
]


# ---------------------------------------------------------------------------------------------------------------
# The background: a rounded night-blue panel with a moonlit mountain header, two cards and a soft shadow


def ridge(rng, x0, x1, base, amplitude, roughness, steps=7):
    """Mountain ridge points by midpoint displacement between x0 and x1 around height `base`."""
    pts = [(x0, base + rng.range(-amplitude, amplitude) * 0.4), (x1, base + rng.range(-amplitude, amplitude) * 0.4)]
    amp = amplitude
    for _ in range(steps):
        out = [pts[0]]
        for (ax, ay), (bx, by) in zip(pts, pts[1:]):
            out.append(((ax + bx) / 2.0, (ay + by) / 2.0 + rng.range(-amp, amp)))
            out.append((bx, by))
        pts = out
        amp *= roughness
    return pts


def fill_below(size, pts, bottom):
    poly = list(pts) + [(pts[-1][0], bottom), (pts[0][0], bottom)]
    return shape(size, lambda d, s: d.polygon([(x * s, y * s) for x, y in poly], fill=255))


def castle(d, s, cx, base):
    """A keep with towers standing on a peak at (cx, base), drawn in white into a mask."""

    def box(x0, y0, x1, y1):
        d.rectangle([(cx + x0) * s, (base + y0) * s, (cx + x1) * s, (base + y1) * s], fill=255)

    def roof(x0, x1, y, height):
        d.polygon([((cx + x0) * s, (base + y) * s), ((cx + x1) * s, (base + y) * s),
                   ((cx + (x0 + x1) / 2.0) * s, (base + y - height) * s)], fill=255)

    box(-30, -22, 30, 6)  # curtain wall
    for i in range(-30, 30, 6):  # crenellations
        box(i, -25, i + 3, -22)
    box(-40, -40, -28, 6)
    roof(-42, -26, -40, 16)
    box(28, -36, 39, 6)
    roof(26, 41, -36, 14)
    box(-10, -58, 10, -20)  # keep
    roof(-13, 13, -58, 24)
    box(-2, -92, 2, -80)  # spire on the keep's roof
    d.polygon([(cx + 2) * s, (base - 92) * s, (cx + 13) * s, (base - 89) * s, (cx + 2) * s, (base - 86) * s],
              fill=255)


def make_background():
    size = (W, H)
    rng = Rng(0x4B41)
    panel = Image.new("RGBA", size, (0, 0, 0, 0))
    panel.alpha_composite(vgrad(size, [(0.0, NAVY_TOP), (1.0, NAVY_BOTTOM)], top=M, span=PH))

    # Sky of the header, fading into the panel below the mountains.
    sky = vgrad(size, [(0.0, (8, 22, 42)), (0.5, (15, 50, 74)), (0.82, (32, 96, 112)), (1.0, (32, 96, 112))],
                top=M, span=190)
    sky_mask = vgrad(size, [(0.0, (255, 255, 255, 255)), (0.8, (255, 255, 255, 255)), (1.0, (0, 0, 0, 0))],
                     top=M, span=200).getchannel("A")
    paint(panel, sky_mask, sky)

    # Stars, fewer near the horizon and none behind the moon.
    moon = (M + 650, M + 70)
    stars = Image.new("L", (W * 2, H * 2), 0)
    sd = ImageDraw.Draw(stars)
    for _ in range(170):
        x, y = rng.range(M + 8, W - M - 8), rng.range(M + 4, M + 150)
        bright = rng.next()
        if (x - moon[0]) ** 2 + (y - moon[1]) ** 2 < 60 ** 2 or rng.next() < (y - M) / 170.0:
            continue
        r = 1.0 if bright < 0.85 else 1.8
        level = int(70 + 170 * bright * (1.0 - (y - M) / 220.0))
        sd.ellipse([(x - r / 2) * 2, (y - r / 2) * 2, (x + r / 2) * 2, (y + r / 2) * 2], fill=level)
    paint(panel, stars.resize(size, Image.BOX), (220, 236, 255))

    # The moon with a warm halo.
    panel.alpha_composite(glow(size, moon, 150, AMBER, 0.22, 2.2))
    panel.alpha_composite(glow(size, moon, 60, (255, 214, 150), 0.45, 2.0))
    disc = shape(size, lambda d, s: d.ellipse([(moon[0] - 22) * s, (moon[1] - 22) * s,
                                               (moon[0] + 22) * s, (moon[1] + 22) * s], fill=255))
    paint(panel, disc, vgrad(size, [(0.0, (255, 240, 214)), (1.0, (255, 206, 140))], top=moon[1] - 22, span=44))
    bite = shape(size, lambda d, s: d.ellipse([(moon[0] - 13) * s, (moon[1] - 30) * s,
                                               (moon[0] + 33) * s, (moon[1] + 14) * s], fill=255))
    paint(panel, ImageChops.multiply(disc, bite), (255, 232, 196), 0.55)  # the lit side, for a hint of a crescent

    # Mountains: a far range in teal haze, mist, the near range with the castle, and dark foothills.
    far = ridge(rng, M - 20, W - M + 20, M + 128, 34, 0.55)
    paint(panel, fill_below(size, far, M + 230), vgrad(size, [(0.0, (19, 58, 78)), (1.0, (12, 36, 54))],
                                                       top=M + 90, span=100))
    paint(panel, glow(size, (M + 330, M + 160), 340, (60, 170, 180), 0.16, 1.6).getchannel("A"),
          Image.new("RGBA", size, (70, 180, 190, 255)))
    near = ridge(rng, M - 20, W - M + 20, M + 158, 26, 0.5)
    # Raise the near ridge into a peak under the castle.
    castle_x = M + 770
    near = [(x, y - max(0.0, 46 - abs(x - castle_x) * 0.38)) for x, y in near]
    near_mask = fill_below(size, near, M + 240)
    peak_y = min(y for x, y in near if abs(x - castle_x) < 10)
    keep = shape(size, lambda d, s: castle(d, s, castle_x, peak_y + 4))
    paint(panel, ImageChops.lighter(near_mask, keep),
          vgrad(size, [(0.0, (11, 30, 47)), (1.0, (8, 20, 34))], top=M + 60, span=150))
    windows = shape(size, lambda d, s: [d.rectangle([(castle_x + dx) * s, (peak_y + dy) * s,
                                                     (castle_x + dx + 2) * s, (peak_y + dy + 3) * s], fill=255)
                                        for dx, dy in ((-3, -40), (3, -40), (-36, -20), (31, -18), (-18, -8),
                                                       (14, -8))])
    panel.alpha_composite(glow(size, (castle_x, peak_y - 30), 46, AMBER, 0.25, 2.0))
    paint(panel, windows, (255, 196, 110))
    hills = ridge(rng, M - 20, W - M + 20, M + 178, 10, 0.5)
    paint(panel, fill_below(size, hills, M + 250), vgrad(size, [(0.0, (7, 17, 30)), (1.0, NAVY_TOP)],
                                                         top=M + 165, span=35))
    # Below the header the panel's own colour takes over again, covering the scenery's lower edge.
    top, span = M + 170, H - M - (M + 170)
    panel.alpha_composite(vgrad(size, [(0.0, rgba(NAVY_TOP, 0)), (30.0 / span, rgba(NAVY_TOP)),
                                       (1.0, rgba(NAVY_BOTTOM))], top=top, span=span))

    # Darken the top edge a little so the title and the window buttons read well.
    panel.alpha_composite(vgrad(size, [(0.0, (0, 6, 14, 130)), (1.0, (0, 6, 14, 0))], top=M, span=46))

    draw_wordmark(panel)
    draw_cards(panel)
    draw_bottom(panel)

    # Panel shape, rim light and the shadow around it.
    shape_mask = rrect(size, (M, M, W - M, H - M), RADIUS)
    rim = ring(size, (M, M, W - M, H - M), RADIUS, 1.0)
    paint(panel, rim, vgrad(size, [(0.0, (70, 130, 160, 200)), (0.3, (40, 78, 104, 170)), (1.0, (28, 52, 74, 160))],
                            top=M, span=PH))
    panel.putalpha(ImageChops.multiply(panel.getchannel("A"), shape_mask))

    shadow_mask = rrect(size, (M + 1, M + 3, W - M - 1, H - M + 1), RADIUS).filter(ImageFilter.GaussianBlur(4.5))
    out = Image.new("RGBA", size, (0, 0, 0, 0))
    paint(out, shadow_mask, (0, 0, 0), 0.6)
    out.alpha_composite(panel)
    return out


def draw_wordmark(img):
    size = img.size
    fnt, tw, top, bottom = wordmark_metrics()
    x, y = M + WORDMARK_AT[0], M + WORDMARK_AT[1] - top
    ink_top, ink_bottom = y + top, y + bottom
    letters = text_mask(size, (x, y), WORDMARK, fnt, WORDMARK_TRACKING)
    outline = text_mask(size, (x, y), WORDMARK, fnt, WORDMARK_TRACKING, stroke=2)
    paint(img, outline.filter(ImageFilter.GaussianBlur(6)), (0, 0, 0), 0.8)  # lift it off the sky
    paint(img, glow(size, (x + tw / 2, (ink_top + ink_bottom) / 2), tw * 0.7, AMBER, 0.10, 2.0).getchannel("A"),
          Image.new("RGBA", size, rgba(AMBER)))
    paint(img, outline, (40, 20, 6))
    gold = vgrad(size, [(0.0, (255, 244, 208)), (0.45, (255, 200, 110)), (0.55, (232, 150, 52)),
                        (1.0, (196, 110, 34))], top=int(ink_top), span=int(ink_bottom - ink_top))
    paint(img, letters, gold)
    # A thin highlight along the top of the letters.
    lit = ImageChops.subtract(letters, ImageChops.offset(letters, 0, 2))
    paint(img, lit, (255, 250, 232), 0.5)

    # "ONLINE" under the wordmark, widely spaced, between two fine rules.
    sub = font("DejaVuSans-Bold.ttf", 13)
    sw, stop, sbottom = text_box("ONLINE", sub, 9.0)
    sy = ink_bottom + 12
    sx = x + (tw - sw) / 2.0
    paint(img, text_mask(size, (sx, sy - stop), "ONLINE", sub, 9.0), (110, 226, 214))
    mid = sy + (sbottom - stop) / 2.0
    for a, b in ((x + 2, sx - 12), (sx + sw + 12, x + tw - 2)):
        line = shape(size, lambda d, s, a=a, b=b: d.rectangle([a * s, (mid - 0.5) * s, b * s, (mid + 0.5) * s],
                                                              fill=255))
        paint(img, line, (110, 226, 214), 0.55)


def card(img, box):
    size = img.size
    x0, y0, x1, y1 = (box[0] + M, box[1] + M, box[2] + M, box[3] + M)
    paint(img, rrect(size, (x0, y0 + 2, x1, y1 + 2), 12).filter(ImageFilter.GaussianBlur(5)), (0, 0, 0), 0.45)
    paint(img, rrect(size, (x0, y0, x1, y1), 12),
          vgrad(size, [(0.0, rgba((17, 35, 56), 236)), (1.0, rgba(CARD, 236))], top=y0, span=y1 - y0))
    paint(img, ring(size, (x0, y0, x1, y1), 12), vgrad(size, [(0.0, rgba((48, 90, 122))), (1.0, rgba(LINE))],
                                                       top=y0, span=y1 - y0), 0.9)
    rule = shape(size, lambda d, s: d.rectangle([(x0 + 12) * s, (y0 + CARD_HEAD) * s, (x1 - 12) * s,
                                                 (y0 + CARD_HEAD + 1) * s - 1], fill=255))
    paint(img, rule, LINE)
    # The teal tab in front of the card's heading.
    tab = rrect(size, (x0 + 12, y0 + 11, x0 + 15, y0 + 24), 1.5)
    paint(img, tab, TEAL)


def draw_cards(img):
    size = img.size
    card(img, NEWS_CARD)
    card(img, STATUS_CARD)
    # The news page's frame: shown as it is until the page has loaded.
    x0, y0, x1, y1 = (IFRAME[0] + M - 1, IFRAME[1] + M - 1, IFRAME[2] + M + 1, IFRAME[3] + M + 1)
    paint(img, rrect(size, (x0, y0, x1, y1), 6), (8, 18, 31))
    paint(img, ring(size, (x0, y0, x1, y1), 6), (26, 50, 72))
    # The status card's divider between the server state and the links.
    sx0, sx1 = STATUS_CARD[0] + M + 16, STATUS_CARD[2] + M - 16
    yd = LINKS_TOP + M - 12
    rule = shape(size, lambda d, s: d.rectangle([sx0 * s, yd * s, sx1 * s, (yd + 1) * s - 1], fill=255))
    paint(img, rule, LINE)


def draw_bottom(img):
    size = img.size
    y = BOTTOM_RULE + M
    rule = shape(size, lambda d, s: d.rectangle([(M + 20) * s, y * s, (W - M - 20) * s, (y + 1) * s - 1],
                                                fill=255))
    paint(img, rule, hgrad(size, [(0.0, rgba(TEAL, 0)), (0.3, rgba(TEAL, 110)), (0.7, rgba(LINE, 200)),
                                  (1.0, rgba(LINE, 0))]))
    sx, sy, sw, sh = START
    img.alpha_composite(glow(size, (M + sx + sw / 2, M + sy + sh / 2), 170, AMBER_DEEP, 0.22, 1.8))


# ---------------------------------------------------------------------------------------------------------------
# Buttons: four state images each (_up, _on hover, _dn pressed, _ds disabled)

STATES = ("up", "on", "dn", "ds")


def start_button(state):
    w, h = START[2], START[3]
    size = (w, h)
    img = Image.new("RGBA", size, (0, 0, 0, 0))
    body = rrect(size, (0, 0, w, h), 11)
    stops = {
        "up": [(0.0, (255, 204, 110)), (0.5, (246, 150, 44)), (1.0, (206, 98, 24))],
        "on": [(0.0, (255, 226, 150)), (0.5, (255, 176, 70)), (1.0, (230, 118, 34))],
        "dn": [(0.0, (196, 112, 30)), (0.5, (214, 118, 30)), (1.0, (226, 138, 46))],
        "ds": [(0.0, (72, 84, 100)), (1.0, (50, 60, 74))],
    }[state]
    paint(img, body, vgrad(size, stops))
    if state in ("up", "on"):
        sheen = rrect(size, (3, 3, w - 3, h * 0.5), 9)
        paint(img, sheen, vgrad(size, [(0.0, (255, 255, 255, 80)), (1.0, (255, 255, 255, 10))], span=h // 2))
    if state == "on":
        img.alpha_composite(glow(size, (w / 2, h * 0.2), w * 0.55, (255, 246, 220), 0.35, 1.6))
    if state == "dn":  # pressed in: a shadow under the top edge
        paint(img, body, vgrad(size, [(0.0, (70, 30, 0, 120)), (0.16, (70, 30, 0, 0))]))
    rim = {"up": (255, 224, 160), "on": (255, 244, 210), "dn": (150, 72, 14), "ds": (96, 110, 128)}[state]
    paint(img, ring(size, (0, 0, w, h), 11, 1.2), rim, 0.9)

    ink = {"up": (40, 18, 4), "on": (36, 14, 0), "dn": (48, 22, 4), "ds": (138, 150, 166)}[state]
    dy = 2 if state == "dn" else 0
    fnt = font("DejaVuSans-Bold.ttf", 20)
    label = "OYUNA BAŞLA"
    tw, top, bottom = text_box(label, fnt, 1.0)
    icon_w, gap = 13, 11
    x = (w - (icon_w + gap + tw)) / 2.0
    cy = h / 2.0 + dy
    tri = shape(size, lambda d, s: d.polygon([(x * s, (cy - 7.5) * s), ((x + icon_w) * s, cy * s),
                                             (x * s, (cy + 7.5) * s)], fill=255))
    letters = text_mask(size, (x + icon_w + gap, cy - (bottom - top) / 2.0 - top), label, fnt, 1.0)
    if state != "ds":  # an embossed light edge under the dark letters
        paint(img, ImageChops.offset(ImageChops.lighter(letters, tri), 0, 1), (255, 236, 196), 0.45)
    paint(img, ImageChops.lighter(letters, tri), ink)
    return img


def icon_mask(size, kind, cx, cy, s):
    """Line icons for the link buttons, about 14 pixels across, centred at (cx, cy)."""

    def draw(d, k):
        lw = int(1.6 * k)
        X = lambda v: (cx + v) * k  # noqa: E731
        Y = lambda v: (cy + v) * k  # noqa: E731
        if kind == "globe":
            d.ellipse([X(-7), Y(-7), X(7), Y(7)], outline=255, width=lw)
            d.ellipse([X(-3), Y(-7), X(3), Y(7)], outline=255, width=lw)
            d.line([X(-7), Y(0), X(7), Y(0)], fill=255, width=lw)
        elif kind == "forum":
            d.rounded_rectangle([X(-7), Y(-6), X(5), Y(3)], 2 * k, outline=255, width=lw)
            d.polygon([X(-4), Y(3), X(-4), Y(7), X(0), Y(3)], fill=255)
            d.line([X(-4), Y(-2), X(2), Y(-2)], fill=255, width=lw)
        elif kind == "chat":  # a headset: the community voice and chat server
            d.arc([X(-7), Y(-7), X(7), Y(7)], 180, 360, fill=255, width=lw)
            d.rounded_rectangle([X(-7.5), Y(-1), X(-3.5), Y(6)], 1.5 * k, fill=255)
            d.rounded_rectangle([X(3.5), Y(-1), X(7.5), Y(6)], 1.5 * k, fill=255)
        elif kind == "help":
            d.ellipse([X(-7), Y(-7), X(7), Y(7)], outline=255, width=lw)
            d.arc([X(-2.8), Y(-4.5), X(2.8), Y(0.8)], 200, 430, fill=255, width=lw)
            d.line([X(0), Y(0.6), X(0), Y(2.2)], fill=255, width=lw)
            d.ellipse([X(-1), Y(3.4), X(1), Y(5.4)], fill=255)

    return shape(size, draw)


def link_button(label, icon, state):
    w, h = LINK_SIZE
    size = (w, h)
    img = Image.new("RGBA", size, (0, 0, 0, 0))
    body = rrect(size, (0, 0, w, h), 7)
    fill = {
        "up": [(0.0, (22, 44, 68, 240)), (1.0, (16, 34, 54, 240))],
        "on": [(0.0, (26, 62, 84, 250)), (1.0, (20, 50, 70, 250))],
        "dn": [(0.0, (9, 22, 36, 250)), (1.0, (12, 28, 44, 250))],
        "ds": [(0.0, (20, 28, 38, 200)), (1.0, (18, 25, 34, 200))],
    }[state]
    paint(img, body, vgrad(size, fill))
    edge = {"up": (40, 76, 104), "on": TEAL, "dn": TEAL_DIM, "ds": (34, 46, 58)}[state]
    paint(img, ring(size, (0, 0, w, h), 7), edge, 0.95)
    if state == "on":
        paint(img, rrect(size, (0, 6, 3, h - 6), 1.5), TEAL)
    ink = {"up": (208, 224, 234), "on": (255, 255, 255), "dn": (170, 200, 212), "ds": (76, 90, 104)}[state]
    icon_ink = {"up": TEAL, "on": (140, 255, 244), "dn": TEAL_DIM, "ds": (70, 84, 98)}[state]
    dy = 1 if state == "dn" else 0
    paint(img, icon_mask(size, icon, 20, h / 2.0 + dy, SS), icon_ink)
    fnt = font("DejaVuSans-Bold.ttf", 11)
    tw, top, bottom = text_box(label, fnt, 1.2)
    paint(img, text_mask(size, (40, h / 2.0 - (bottom - top) / 2.0 - top + dy), label, fnt, 1.2), ink)
    chevron = shape(size, lambda d, k: d.line([(w - 20) * k, (h / 2 - 4 + dy) * k, (w - 16) * k,
                                               (h / 2 + dy) * k, (w - 20) * k, (h / 2 + 4 + dy) * k],
                                              fill=255, width=int(1.6 * k), joint="curve"))
    chev_ink = {"up": (90, 124, 150), "on": TEAL, "dn": TEAL_DIM, "ds": (50, 62, 74)}[state]
    paint(img, chevron, chev_ink)
    return img


def new_button(state):
    w, h = NEW_BUTTON
    size = (w, h)
    img = Image.new("RGBA", size, (0, 0, 0, 0))
    pill = rrect(size, (0, 0, w, h), h / 2.0)
    fill = {"up": (18, 48, 62, 170), "on": (40, 196, 184, 255), "dn": (24, 140, 132, 255),
            "ds": (24, 32, 42, 170)}[state]
    paint(img, pill, fill)
    edge = {"up": TEAL, "on": (150, 255, 244), "dn": TEAL_DIM, "ds": (44, 56, 68)}[state]
    paint(img, ring(size, (0, 0, w, h), h / 2.0), edge, 0.85)
    ink = {"up": (120, 232, 220), "on": (4, 32, 30), "dn": (4, 32, 30), "ds": (74, 88, 100)}[state]
    centred_text(img, (0, 0, w, h), "YENİLİKLER  ›", font("DejaVuSans-Bold.ttf", 10), ink, 0.8,
                 dy=1 if state == "dn" else 0)
    return img


def window_button(glyph, state):
    w, h = WINDOW_BUTTON
    size = (w, h)
    img = Image.new("RGBA", size, (0, 0, 0, 0))
    back = {"up": None, "on": (255, 255, 255, 34), "dn": (255, 255, 255, 18), "ds": None}[state]
    if glyph == "close":
        back = {"up": None, "on": (216, 64, 78, 255), "dn": (166, 44, 56, 255), "ds": None}[state]
    if back:
        paint(img, rrect(size, (0, 0, w, h), 6), back)
    ink = {"up": (170, 192, 208), "on": (255, 255, 255), "dn": (214, 224, 232), "ds": (70, 86, 100)}[state]
    cx, cy = w / 2.0, h / 2.0 + (1 if state == "dn" else 0)

    def draw(d, k):
        lw = int(1.5 * k)
        if glyph == "close":
            d.line([(cx - 5) * k, (cy - 5) * k, (cx + 5) * k, (cy + 5) * k], fill=255, width=lw)
            d.line([(cx - 5) * k, (cy + 5) * k, (cx + 5) * k, (cy - 5) * k], fill=255, width=lw)
        else:
            d.line([(cx - 5) * k, (cy + 1) * k, (cx + 5) * k, (cy + 1) * k], fill=255, width=lw)

    paint(img, shape(size, draw), ink)
    return img


# ---------------------------------------------------------------------------------------------------------------
# Gauges, the crest and the status lamp


def gauge(w, h, full, colours):
    size = (w, h)
    img = Image.new("RGBA", size, (0, 0, 0, 0))
    body = rrect(size, (0, 0, w, h), h / 2.0)
    if not full:
        paint(img, body, vgrad(size, [(0.0, (4, 10, 18, 240)), (1.0, (10, 22, 36, 240))]))
        paint(img, ring(size, (0, 0, w, h), h / 2.0), vgrad(size, [(0.0, (18, 36, 54)), (1.0, (40, 72, 98))]))
        return img
    paint(img, body, hgrad(size, colours))
    paint(img, rrect(size, (1, 1, w - 1, h / 2.0), h / 4.0), (255, 255, 255), 0.28)
    stripes = shape(size, lambda d, k: [d.polygon([(x * k, h * k), ((x + 6) * k, h * k), ((x + 6 + h) * k, 0),
                                                   ((x + h) * k, 0)], fill=255) for x in range(-h, w, 14)])
    paint(img, ImageChops.multiply(stripes, body), (255, 255, 255), 0.08)
    paint(img, ring(size, (0, 0, w, h), h / 2.0), (255, 255, 255), 0.18)
    return img


def crest():
    w, h = 72, 86
    size = (w, h)
    img = Image.new("RGBA", size, (0, 0, 0, 0))

    def shield(inset):
        def draw(d, k):
            x0, x1, top, mid, tip = 4 + inset, w - 4 - inset, 3 + inset, 48, h - 5 - inset * 1.4
            pts = [(x0, top + 6), (w / 2.0, top), (x1, top + 6), (x1, mid)]
            # the lower curve down to the tip, as a polyline
            for i in range(1, 13):
                t = i / 12.0
                pts.append((x1 + (w / 2.0 - x1) * t, mid + (tip - mid) * (t ** 1.6)))
            for i in range(1, 13):
                t = 1 - i / 12.0
                pts.append((x0 + (w / 2.0 - x0) * t, mid + (tip - mid) * (t ** 1.6)))
            d.polygon([(x * k, y * k) for x, y in pts], fill=255)

        return shape(size, draw)

    outer, inner, field = shield(0), shield(2.5), shield(4.5)
    paint(img, ImageChops.offset(outer, 0, 2).filter(ImageFilter.GaussianBlur(2.5)), (0, 0, 0), 0.7)
    paint(img, outer, vgrad(size, [(0.0, (255, 232, 170)), (0.5, (236, 160, 60)), (1.0, (170, 96, 26))]))
    paint(img, inner, (20, 12, 6))
    paint(img, field, vgrad(size, [(0.0, (24, 62, 92)), (1.0, (10, 26, 46))]))
    cx, cy = w / 2.0, 40
    moon = shape(size, lambda d, k: d.ellipse([(cx - 15) * k, (cy - 15) * k, (cx + 15) * k, (cy + 15) * k],
                                              fill=255))
    cut = shape(size, lambda d, k: d.ellipse([(cx - 8) * k, (cy - 19) * k, (cx + 18) * k, (cy + 9) * k],
                                             fill=255))
    paint(img, ImageChops.subtract(moon, cut), vgrad(size, [(0.0, (255, 236, 190)), (1.0, (236, 160, 60))],
                                                     top=25, span=30))

    def star(d, k):
        sx, sy, r1, r2 = cx + 6, cy - 6, 8.0, 2.2
        pts = []
        for i in range(8):
            r = r1 if i % 2 == 0 else r2
            a = i * math.pi / 4
            pts.append(((sx + r * math.sin(a)) * k, (sy - r * math.cos(a)) * k))
        d.polygon(pts, fill=255)

    paint(img, shape(size, star).filter(ImageFilter.GaussianBlur(1.5)), TEAL, 0.9)
    paint(img, shape(size, star), (214, 255, 250))
    paint(img, ImageChops.subtract(outer, ImageChops.offset(outer, 0, 1)), (255, 248, 220), 0.6)
    return img


def lamp():
    size = (18, 18)
    img = glow(size, (9, 9), 9, (60, 230, 120), 0.55, 1.4)
    core = shape(size, lambda d, k: d.ellipse([4.5 * k, 4.5 * k, 13.5 * k, 13.5 * k], fill=255))
    paint(img, core, vgrad(size, [(0.0, (170, 255, 196)), (1.0, (40, 200, 100))], top=5, span=9))
    return img


def draw_images():
    """Every picture of the skin, by file name."""
    images = {"bg.png": make_background(), "crest.png": crest(), "lamp_online.png": lamp(),
              "gauge_full.png": gauge(GAUGE_W, MAIN_GAUGE_H, True, [(0.0, TEAL_DIM), (0.7, TEAL),
                                                                     (1.0, (130, 244, 232))]),
              "gauge_empty.png": gauge(GAUGE_W, MAIN_GAUGE_H, False, None),
              "gauge_sub_full.png": gauge(GAUGE_W, SUB_GAUGE_H, True, [(0.0, AMBER_DEEP), (1.0, AMBER)]),
              "gauge_sub_empty.png": gauge(GAUGE_W, SUB_GAUGE_H, False, None)}
    for st in STATES:
        images["btn_start_%s.png" % st] = start_button(st)
        images["btn_new_%s.png" % st] = new_button(st)
        images["btn_close_%s.png" % st] = window_button("close", st)
        images["btn_min_%s.png" % st] = window_button("min", st)
        for cid, base, label, icon, link in LINKS:
            images["%s_%s.png" % (base, st)] = link_button(label, icon, st)
    return images
