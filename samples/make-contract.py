#!/usr/bin/env python3
"""Makes samples/contract.pdf: a small contract to try the program on.

    samples/make-contract.py [OUTPUT]

Plain Python; the same input always makes the same bytes. The people and companies in it do not exist.
"""

import pathlib
import sys
import zlib

PAGE_WIDTH, PAGE_HEIGHT = 595, 842  # A4
LEFT, RIGHT, TOP, BOTTOM = 72, 523, 770, 90

TITLE = "Agreement on the Restoration of a Harpsichord"
SECTIONS = [
    ("1  The parties",
     ["This agreement is made between Marlow Street Concerts, a society for chamber music, of 14 Marlow Street, "
      "Ferrisburgh (the Owner), and the workshop of Ada Lindqvist, maker and restorer of keyboard instruments, of "
      "3 Canal Yard, Ferrisburgh (the Workshop)."]),
    ("2  The instrument",
     ["The instrument is a harpsichord with two manuals and three sets of strings, made about 1770, maker unknown, "
      "numbered 27 in the Owner's inventory. Its condition was recorded on 4 March in the presence of both parties; "
      "the record with 46 photographs belongs to this agreement."]),
    ("3  The work",
     ["The Workshop cleans the instrument, repairs the cracks of the soundboard, restrings it in brass and iron after "
      "the gauges that are marked on the nut, replaces the missing jacks of the lower manual, and regulates the action.",
      "Old parts that are replaced are kept, labelled, and handed over with the instrument. Nothing is done that "
      "cannot be undone, and no varnish is removed. Whatever goes beyond this is agreed in writing before it begins."]),
    ("4  Time and place",
     ["The Owner brings the instrument to the Workshop before the end of April. The work is finished within seven "
      "months. Should the Workshop be held up by causes outside its control, it says so at once, and the parties agree "
      "on a new date."]),
    ("5  Price and payment",
     ["The price is 18,400, all materials included. One third is due when the instrument arrives, one third when the "
      "soundboard has been closed again, and the rest within thirty days after the instrument has been played in "
      "and accepted by the Owner."]),
    ("6  Insurance",
     ["The Owner insures the instrument for its journeys, the Workshop for the time in between, each for no less than "
      "60,000. Each party shows the other its policy before the instrument is moved."]),
    ("7  Acceptance and warranty",
     ["The Owner has the instrument played by two musicians of its choice within three weeks after it has come back. "
      "Faults that they find are put right by the Workshop without charge.",
      "For two years the Workshop puts right, without charge, whatever goes back to its work. Strings, quills and felt "
      "wear out by being played and are not part of this; neither are faults caused by a room whose humidity leaves "
      "the range from 45 to 65 per cent."]),
    ("8  Records",
     ["The Workshop keeps a diary of the work with photographs. The Owner receives a copy and may show it in public, "
      "naming the Workshop."]),
    ("9  Changes",
     ["Changes to this agreement are made in writing and signed by both parties. Should one of its terms turn out to "
      "be void, the others stay in force."]),
]
# The advance widths of the printable ASCII characters, in thousandths of the font size.
WIDTHS = {
    "Times-Roman":
        [250, 333, 408, 500, 500, 833, 778, 180, 333, 333, 500, 564, 250, 333, 250, 278] + [500] * 10 +
        [278, 278, 564, 564, 564, 444, 921, 722, 667, 667, 722, 611, 556, 722, 722, 333, 389, 722, 611, 889, 722, 722,
         556, 722, 667, 556, 611, 722, 722, 944, 722, 722, 611, 333, 278, 333, 469, 500, 333, 444, 500, 444, 500, 444,
         333, 500, 500, 278, 278, 500, 278, 778, 500, 500, 500, 500, 333, 389, 278, 500, 500, 722, 500, 500, 444, 480,
         200, 480, 541],
}
BODY, HEADING, SMALL = ("F1", 11), ("F2", 12), ("F3", 8.5)


def width_of(text, size):
    return sum(WIDTHS["Times-Roman"][ord(character) - 32] for character in text) * size / 1000


def lines_of(text, size, width):
    """Breaks a paragraph into lines that are no wider."""
    line = ""
    for word in text.split():
        longer = f"{line} {word}".strip()
        if line and width_of(longer, size) > width:
            yield line
            line = word
        else:
            line = longer
    yield line


class Pages:
    """Sets text from the top of each page downward."""

    def __init__(self):
        self.contents = []
        self.y = 0
        self.turn()

    def turn(self):
        self.contents.append([])
        self.y = TOP

    def draw(self, operators):
        self.contents[-1].append(operators)

    def text(self, x, y, font, text, spacing=0.0):
        escaped = text.replace("\\", r"\\").replace("(", r"\(").replace(")", r"\)")
        name, size = font
        self.draw(f"BT /{name} {size} Tf {spacing:.4f} Tw {x:.2f} {y:.2f} Td ({escaped}) Tj ET")

    def rule(self, x, y, width, thickness=0.6, grey=0.35):
        self.draw(f"q {grey} G {thickness} w {x:.2f} {y:.2f} m {x + width:.2f} {y:.2f} l S Q")

    def room(self, height):
        if self.y - height < BOTTOM:
            self.turn()

    def paragraph(self, text):
        lines = list(lines_of(text, BODY[1], RIGHT - LEFT))
        self.room(len(lines) * 15)
        for line in lines:
            self.y -= 15
            gaps = line.count(" ")
            rest = RIGHT - LEFT - width_of(line, BODY[1])
            justified = gaps and line is not lines[-1]
            self.text(LEFT, self.y, BODY, line, rest / gaps if justified else 0.0)
        self.y -= 6

    def section(self, heading, paragraphs):
        self.room(18 + 4 * 15)
        self.y -= 18
        self.text(LEFT, self.y, HEADING, heading)
        self.y -= 3
        for paragraph in paragraphs:
            self.paragraph(paragraph)
        self.y -= 6


def signature_block(pages, x, party, name):
    width = 205
    pages.text(x, pages.y, HEADING, party)
    for offset, label in ((78, name), (138, "Place and date")):
        pages.rule(x, pages.y - offset, width)
        pages.text(x, pages.y - offset - 13, SMALL, label)


def compose():
    pages = Pages()
    pages.y -= 20
    pages.text(LEFT, pages.y, ("F2", 20), TITLE)
    pages.y -= 14
    pages.rule(LEFT, pages.y, RIGHT - LEFT, 1.2, 0.2)
    pages.y -= 14
    for heading, paragraphs in SECTIONS:
        pages.section(heading, paragraphs)
    pages.room(240)
    pages.y -= 36
    pages.text(LEFT, pages.y, BODY, "Read, understood and agreed in two copies, one for each party.")
    pages.y -= 40
    signature_block(pages, LEFT, "For the Owner", "Tomas Veld, treasurer")
    signature_block(pages, RIGHT - 205, "For the Workshop", "Ada Lindqvist")
    total = len(pages.contents)
    for number, content in enumerate(pages.contents, 1):
        content.append(f"BT /F3 8.5 Tf {LEFT} 56 Td (Marlow Street Concerts / Workshop Lindqvist) Tj ET")
        content.append(f"BT /F3 8.5 Tf {RIGHT - 46} 56 Td (Page {number} of {total}) Tj ET")
        if number < total:  # a place for initials
            content.append(f"q 0.7 G 0.6 w {RIGHT - 150} 50 80 22 re S Q")
            content.append(f"q 0.5 g BT /F3 7 Tf {RIGHT - 178} 56 Td (Initials) Tj ET Q")
    return ["\n".join(content).encode("ascii") for content in pages.contents]


def write(contents):
    fonts = {"F1": "Times-Roman", "F2": "Helvetica-Bold", "F3": "Helvetica"}
    first_page = 4 + len(fonts)
    kids = " ".join(f"{first_page + 2 * index} 0 R" for index in range(len(contents)))
    font_entries = " ".join(f"/{name} {4 + index} 0 R" for index, name in enumerate(fonts))
    objects = [
        b"<< /Type /Catalog /Pages 2 0 R /Lang (en) /ViewerPreferences << /DisplayDocTitle true >> >>",
        (f"<< /Type /Pages /Kids [{kids}] /Count {len(contents)} /MediaBox [0 0 {PAGE_WIDTH} {PAGE_HEIGHT}] "
         f"/Resources << /Font << {font_entries} >> >> >>").encode(),
        f"<< /Title ({TITLE}) >>".encode(),
    ]
    for font in fonts.values():
        objects.append(f"<< /Type /Font /Subtype /Type1 /BaseFont /{font} /Encoding /WinAnsiEncoding >>".encode())
    for index, content in enumerate(contents):
        objects.append(f"<< /Type /Page /Parent 2 0 R /Contents {first_page + 2 * index + 1} 0 R >>".encode())
        packed = zlib.compress(content, 9)
        objects.append(f"<< /Length {len(packed)} /Filter /FlateDecode >>\nstream\n".encode() + packed +
                       b"\nendstream")

    file = bytearray(b"%PDF-1.4\n%\xe2\xe3\xcf\xd3\n")
    table = "0000000000 65535 f \n"
    for number, body in enumerate(objects, 1):
        table += f"{len(file):010d} 00000 n \n"
        file += f"{number} 0 obj\n".encode() + body + b"\nendobj\n"
    start = len(file)
    file += (f"xref\n0 {len(objects) + 1}\n{table}trailer\n<< /Size {len(objects) + 1} /Root 1 0 R /Info 3 0 R >>\n"
             f"startxref\n{start}\n%%EOF\n").encode()
    return bytes(file)


if __name__ == "__main__":
    default = pathlib.Path(__file__).resolve().parent / "contract.pdf"
    pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else default).write_bytes(write(compose()))
