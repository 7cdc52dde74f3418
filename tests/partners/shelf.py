"""The shelf at the upper edge of the screen, by a hand on the mouse: what other programs drag goes there and comes out again."""
import time

from hands import PATIENCE, Partner, glide, middle_of, point_at, rectangle_of, until, walk_all, xdo

SHELF = "NotchShelf"


class Shelf:
    def __init__(self, program):
        self.program = program
        self.width, self.height = map(int, xdo("getdisplaygeometry").split())
        self.top = (self.width // 2, 12)

    def window(self):
        root = Partner.reader.program(self.program.process.pid)
        return next((window for window in root.children() if window.name == SHELF), None)

    def items(self):
        """What it holds, by its names, with their places."""
        return {node.name: node for node in walk_all(self.window()) if node.role == "list item"}

    def leave(self):
        point_at(self.width / 2, self.height - 5)

    def take(self, start):
        """Drags from a place to the shelf and lets go there once the shelf has seen it."""
        entered, dropped = self.program.count("Drag entered!"), self.program.count("[NotchShelf]")
        self.begin_drag(start)
        glide((start[0] + 40, start[1] + 30), self.top)
        # A hand is never still, and the program that drags tells of its drag when the pointer moves.
        def has_entered():
            glide(self.top, (self.top[0] + 6, self.top[1]), 2)
            glide((self.top[0] + 6, self.top[1]), self.top, 2)
            return self.program.count("Drag entered!") > entered
        seen = until(has_entered, PATIENCE)
        settled()
        xdo("mouseup", 1)
        assert seen, "the drag did not come to the shelf"
        assert until(lambda: self.program.count("[NotchShelf]") > dropped + 1, PATIENCE), self.program.log.read_text()[-1500:]

    def begin_drag(self, start):
        point_at(*start)
        settled()
        xdo("mousedown", 1)
        glide(start, (start[0] + 40, start[1] + 30))

    def give(self, name, target, is_done):
        """Drags the item out to a place, and moves about there until it may be let go; `is_done` tells what comes of it."""
        self.leave()
        glide((self.width / 2, 80), (self.width / 2, 1))
        item = until(lambda: next((node for key, node in self.items().items() if name in key), None), PATIENCE)
        assert item, f"the shelf has no “{name}” but {list(self.items())}"
        def is_still():
            before = rectangle_of(item)
            settled()
            return before == rectangle_of(item) and before[1] > 0
        assert until(is_still, PATIENCE)
        start = middle_of(item)
        glide((self.width / 2, 1), start)
        self.begin_drag(start)
        glide((start[0] + 40, start[1] + 30), target)
        for step in range(40):  # programs answer where the pointer moves
            glide(target, (target[0] + step % 3, target[1]), 1)
            time.sleep(0.03)
        xdo("mouseup", 1)
        return until(is_done, PATIENCE)


def settled():
    """A hand's pause: programs see a press and a move as one gesture only if they follow each other at a person's pace."""
    time.sleep(0.25)
