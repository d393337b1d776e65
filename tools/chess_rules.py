"""The rules of chess, written plainly for the referee of the match tools.

A second writing of the rules, on purpose independent of the engine: a move that the engine thinks
legal is checked here. Slow and simple: a board of 64 letters, every move is made to see whether it
is legal.
"""

import re

START_FEN = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1"

KNIGHT_STEPS = ((1, 2), (2, 1), (2, -1), (1, -2), (-1, -2), (-2, -1), (-2, 1), (-1, 2))
ROOK_STEPS = ((1, 0), (-1, 0), (0, 1), (0, -1))
BISHOP_STEPS = ((1, 1), (1, -1), (-1, 1), (-1, -1))
KING_STEPS = ROOK_STEPS + BISHOP_STEPS
SLIDERS = {"R": ROOK_STEPS, "B": BISHOP_STEPS, "Q": KING_STEPS}

# The squares whose leaving or capture ends castling rights.
RIGHTS_LOST = {0: "Q", 7: "K", 4: "KQ", 56: "q", 63: "k", 60: "kq"}


def square_name(square):
    return "abcdefgh"[square % 8] + "12345678"[square // 8]


def square_of(name):
    return "abcdefgh".index(name[0]) + 8 * "12345678".index(name[1])


def step(square, df, dr):
    """The square df files and dr ranks away, or None beyond the edge."""
    file, rank = square % 8 + df, square // 8 + dr
    return file + 8 * rank if 0 <= file < 8 and 0 <= rank < 8 else None


class Position:
    """A position with the history that repetitions need. Moves are texts such as e2e4 or e7e8q."""

    def __init__(self, fen=START_FEN):
        fields = fen.split()
        self.board = [None] * 64
        for row, text in enumerate(fields[0].split("/")):
            square = 8 * (7 - row)
            for letter in text:
                if letter.isdigit():
                    square += int(letter)
                else:
                    self.board[square] = letter
                    square += 1
        self.white = len(fields) < 2 or fields[1] == "w"
        self.rights = fields[2].strip("-") if len(fields) > 2 else ""
        self.ep = square_of(fields[3]) if len(fields) > 3 and fields[3] != "-" else None
        self.quiet = int(fields[4]) if len(fields) > 4 and fields[4].isdigit() else 0
        self.number = int(fields[5]) if len(fields) > 5 and fields[5].isdigit() else 1
        self.history = [self.key()]

    # What a position is.

    def placement(self):
        rows = []
        for rank in range(7, -1, -1):
            row, empty = "", 0
            for piece in self.board[8 * rank : 8 * rank + 8]:
                if piece is None:
                    empty += 1
                else:
                    row += (str(empty) if empty else "") + piece
                    empty = 0
            rows.append(row + (str(empty) if empty else ""))
        return "/".join(rows)

    def usable_ep(self):
        """The en-passant square when some legal capture uses it."""
        if self.ep is None:
            return None
        target = square_name(self.ep)
        pawn = "P" if self.white else "p"
        for move in self.pseudo_moves():
            if move[2:4] == target and self.board[square_of(move)] == pawn and move[0] != move[2]:
                if self.is_safe(move):
                    return self.ep
        return None

    def key(self):
        """Equal for positions that count as repetitions of each other."""
        return (tuple(self.board), self.white, "".join(sorted(self.rights)), self.usable_ep())

    def fen(self):
        ep = "-" if self.ep is None else square_name(self.ep)
        rights = "".join(r for r in "KQkq" if r in self.rights) or "-"
        side = "w" if self.white else "b"
        return f"{self.placement()} {side} {rights} {ep} {self.quiet} {self.number}"

    def is_own(self, piece):
        return piece is not None and piece.isupper() == self.white

    def is_attacked(self, square, by_white):
        def holds(at, kinds):
            piece = None if at is None else self.board[at]
            return piece is not None and piece.isupper() == by_white and piece.upper() in kinds

        behind = -1 if by_white else 1
        if any(holds(step(square, df, behind), "P") for df in (-1, 1)):
            return True
        if any(holds(step(square, df, dr), "N") for df, dr in KNIGHT_STEPS):
            return True
        if any(holds(step(square, df, dr), "K") for df, dr in KING_STEPS):
            return True
        for steps, kinds in ((ROOK_STEPS, "RQ"), (BISHOP_STEPS, "BQ")):
            for df, dr in steps:
                at = step(square, df, dr)
                while at is not None and self.board[at] is None:
                    at = step(at, df, dr)
                if holds(at, kinds):
                    return True
        return False

    def is_in_check(self):
        return self.is_attacked(self.board.index("K" if self.white else "k"), not self.white)

    # Moves.

    def pawn_moves(self, origin):
        ahead, first, last = (1, 1, 7) if self.white else (-1, 6, 0)
        targets = []
        one = step(origin, 0, ahead)
        if one is not None and self.board[one] is None:
            targets.append(one)
            two = step(one, 0, ahead)
            if origin // 8 == first and self.board[two] is None:
                targets.append(two)
        for df in (-1, 1):
            to = step(origin, df, ahead)
            if to is None:
                continue
            piece = self.board[to]
            if to == self.ep or (piece is not None and not self.is_own(piece)):
                targets.append(to)
        for to in targets:
            text = square_name(origin) + square_name(to)
            yield from (text + p for p in "qrbn") if to // 8 == last else (text,)

    def castling_moves(self):
        home = 4 if self.white else 60
        for right, empty, crossed in (("K", (1, 2), (0, 1, 2)), ("Q", (-1, -2, -3), (0, -1, -2))):
            if (right if self.white else right.lower()) not in self.rights:
                continue
            if any(self.board[home + e] is not None for e in empty):
                continue
            if not any(self.is_attacked(home + c, not self.white) for c in crossed):
                yield square_name(home) + square_name(home + crossed[2])

    def pseudo_moves(self):
        """All moves but for the safety of the own king."""
        for origin, piece in enumerate(self.board):
            if not self.is_own(piece):
                continue
            kind = piece.upper()
            if kind == "P":
                yield from self.pawn_moves(origin)
                continue
            steps = SLIDERS.get(kind) or (KNIGHT_STEPS if kind == "N" else KING_STEPS)
            for df, dr in steps:
                to = step(origin, df, dr)
                while to is not None:
                    if not self.is_own(self.board[to]):
                        yield square_name(origin) + square_name(to)
                    if self.board[to] is not None or kind not in SLIDERS:
                        break
                    to = step(to, df, dr)
        yield from self.castling_moves()

    def place(self, move):
        """Makes the move on the board alone; returns what is needed to take it back."""
        origin, to = square_of(move), square_of(move[2:])
        piece = self.board[origin]
        changed = [(origin, piece), (to, self.board[to])]
        self.board[origin], self.board[to] = None, piece
        if piece in "Pp" and to == self.ep and origin % 8 != to % 8:
            victim = to - 8 if self.white else to + 8
            changed.append((victim, self.board[victim]))
            self.board[victim] = None
        elif piece in "Pp" and len(move) > 4:
            self.board[to] = move[4].upper() if self.white else move[4].lower()
        elif piece in "Kk" and abs(origin - to) == 2:
            rook, beside = (to + 1, to - 1) if to > origin else (to - 2, to + 1)
            changed += [(rook, self.board[rook]), (beside, None)]
            self.board[beside], self.board[rook] = self.board[rook], None
        return changed

    def is_safe(self, move):
        """Whether a pseudo-legal move leaves the own king out of check."""
        changed = self.place(move)
        king = self.board.index("K" if self.white else "k")
        safe = not self.is_attacked(king, not self.white)
        for square, piece in changed:
            self.board[square] = piece
        return safe

    def legal_moves(self):
        return [m for m in self.pseudo_moves() if self.is_safe(m)]

    def push(self, move):
        """Plays a move. Requires: it is one of legal_moves()."""
        origin, to = square_of(move), square_of(move[2:])
        piece = self.board[origin]
        is_pawn = piece in "Pp"
        is_capture = self.board[to] is not None
        self.place(move)
        self.ep = (origin + to) // 2 if is_pawn and abs(origin - to) == 16 else None
        for square in (origin, to):
            self.rights = "".join(r for r in self.rights if r not in RIGHTS_LOST.get(square, ""))
        irreversible = is_pawn or is_capture
        self.quiet = 0 if irreversible else self.quiet + 1
        self.number += 0 if self.white else 1
        self.white = not self.white
        if irreversible:
            self.history = []
        self.history.append(self.key())

    # The end of a game.

    def lacks_material(self):
        """Nobody can ever mate: bare kings, one minor piece, or bishops of one square colour."""
        men = [(p.upper(), s) for s, p in enumerate(self.board) if p is not None and p not in "Kk"]
        if len(men) <= 1:
            return all(kind in "BN" for kind, _ in men)
        colours = {(square // 8 + square) % 2 for _, square in men}
        return all(kind == "B" for kind, _ in men) and len(colours) == 1

    def outcome(self):
        """(result, reason) of a finished game, None while it goes on."""
        if not self.legal_moves():
            if not self.is_in_check():
                return "1/2-1/2", "stalemate"
            return ("0-1" if self.white else "1-0"), "mate"
        if self.lacks_material():
            return "1/2-1/2", "insufficient material"
        if self.quiet >= 100:
            return "1/2-1/2", "fifty moves"
        if self.history.count(self.history[-1]) >= 3:
            return "1/2-1/2", "repetition"
        return None

    def perft(self, depth):
        """The number of move sequences of the given length."""
        if depth == 0:
            return 1
        total = 0
        for move in self.legal_moves():
            child = Position(self.fen())
            child.push(move)
            total += child.perft(depth - 1)
        return total

    # Standard algebraic notation, for game records.

    def san(self, move):
        origin, to = square_of(move), square_of(move[2:])
        kind = self.board[origin].upper()
        is_capture = self.board[to] is not None or (kind == "P" and origin % 8 != to % 8)
        if kind == "K" and abs(origin - to) == 2:
            text = "O-O" if to > origin else "O-O-O"
        elif kind == "P":
            text = (move[0] + "x" if is_capture else "") + move[2:4]
            text += "=" + move[4].upper() if len(move) > 4 else ""
        else:
            text = kind + self.disambiguation(move) + ("x" if is_capture else "") + move[2:4]
        child = Position(self.fen())
        child.push(move)
        if child.is_in_check():
            text += "+" if child.legal_moves() else "#"
        return text

    def disambiguation(self, move):
        piece = self.board[square_of(move)]
        rivals = [
            m
            for m in self.legal_moves()
            if m[2:4] == move[2:4] and m[:2] != move[:2] and self.board[square_of(m)] == piece
        ]
        if not rivals:
            return ""
        if all(m[0] != move[0] for m in rivals):
            return move[0]
        return move[1] if all(m[1] != move[1] for m in rivals) else move[:2]

    def parse_san(self, text):
        """The legal move that a text in standard algebraic notation means.

        On failure: ValueError.
        """
        wanted = text.rstrip("+#!?")
        # Writing a move is slow: only those to the square that the text names are written.
        square = re.search(r"([a-h][1-8])(=.)?$", wanted)
        moves = [m for m in self.legal_moves() if not square or m[2:4] == square.group(1)]
        found = [m for m in moves if self.san(m).rstrip("+#") == wanted]
        if len(found) != 1:
            raise ValueError(f"{text} is no move in {self.fen()}")
        return found[0]
