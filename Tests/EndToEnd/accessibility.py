"""What an assistive tool sees of the console.

Everything is asked of the program anew: nothing is remembered that could be out of date.
"""

import collections
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

# Much more than anything takes; a run that fails is the only one that waits so long.
LONGEST_WAIT = 30
# Of a damaged tree, so that a walk ends.
DEEPEST = 60

State = Atspi.StateType


class NotThere(AssertionError):
    """Something was not to be found, or did not become true."""


class Node:
    """One object of the tree. One that is gone meanwhile answers empty texts and no states."""

    def __init__(self, accessible):
        self.accessible = accessible

    @property
    def role(self):
        return self._ask("", lambda: self.accessible.get_role_name())

    @property
    def name(self):
        return self._ask("", lambda: self.accessible.get_name()) or ""

    @property
    def description(self):
        return self._ask("", lambda: self.accessible.get_description()) or ""

    @property
    def text(self):
        """The content of a field, or of a text that can be selected."""
        return self._ask("", lambda: Atspi.Text.get_text(self.accessible, 0, -1)) or ""

    @property
    def value(self):
        return self._ask(None, lambda: self.accessible.get_value_iface().get_current_value())

    @property
    def attributes(self):
        return self._ask({}, lambda: self.accessible.get_attributes()) or {}

    @property
    def children(self):
        count = self._ask(0, lambda: self.accessible.get_child_count())
        for index in range(count):
            child = self._ask(None, lambda i=index: self.accessible.get_child_at_index(i))
            if child:
                yield Node(child)

    @property
    def parent(self):
        parent = self._ask(None, lambda: self.accessible.get_parent())
        return Node(parent) if parent else None

    @property
    def index(self):
        return self._ask(-1, lambda: self.accessible.get_index_in_parent())

    def has(self, *states):
        held = self._ask((), lambda: self.accessible.get_state_set().get_states())
        return all(state in held for state in states)

    @property
    def is_showing(self):
        return self.has(State.SHOWING)

    @property
    def extents(self):
        return self._ask(None, lambda: Atspi.Component.get_extents(self.accessible, Atspi.CoordType.SCREEN))

    @property
    def centre(self):
        box = self.extents
        return (box.x + box.width // 2, box.y + box.height // 2) if box and box.width > 0 else None

    @property
    def actions(self):
        count = self._ask(0, lambda: Atspi.Action.get_n_actions(self.accessible))
        return [self._ask("", lambda i=i: Atspi.Action.get_action_name(self.accessible, i)) for i in range(count)]

    def do(self, action):
        """Performs the action of this name, as a screen reader does on behalf of its user."""
        actions = self.actions
        if action not in actions:
            raise NotThere(f"{self} has no action {action!r}, only {actions}.")
        Atspi.Action.do_action(self.accessible, actions.index(action))

    def set_text(self, text):
        if not Atspi.EditableText.set_text_contents(self.accessible, text):
            raise NotThere(f"{self} refused the text.")

    def focus(self):
        return self._ask(False, lambda: Atspi.Component.grab_focus(self.accessible))

    def walk(self, hidden=False, depth=0):
        """This and everything below that is showing, top to bottom."""
        if depth > DEEPEST:
            raise NotThere(f"{self} lies deeper than any tree is.")
        yield self, depth
        for child in self.children:
            if hidden or child.is_showing:
                yield from child.walk(hidden, depth + 1)

    def all(self, role=None, name=None, **more):
        """Everything showing below that fits; texts are compared whole, a predicate is asked."""
        return [node for node, depth in self.walk() if depth and node.fits(role, name, **more)]

    def fits(self, role=None, name=None, description=None, text=None, state=None):
        wanted = ((role, "role"), (name, "name"), (description, "description"), (text, "text"))
        return all(
            value is None or (value(getattr(self, key)) if callable(value) else value == getattr(self, key))
            for value, key in wanted
        ) and (state is None or self.has(state))

    @property
    def spoken(self):
        """Every text showing here and below."""
        texts = []
        for node, _ in self.walk():
            texts += [text for text in (node.name, node.description, node.text) if text]
        return texts

    def dump(self, hidden=False):
        lines = []
        for node, depth in self.walk(hidden):
            held = node._ask((), lambda n=node: n.accessible.get_state_set().get_states())
            states = " ".join(sorted(state.value_nick for state in held)) or "gone"
            line = f"{'  ' * depth}{node.role} {node.name!r}"
            if node.description:
                line += f" description={node.description!r}"
            if node.text and node.text != node.name:
                line += f" text={node.text!r}"
            lines.append(f"{line} [{states}]")
        return "\n".join(lines)

    def __str__(self):
        return f"{self.role} {self.name!r}"

    @staticmethod
    def _ask(otherwise, question):
        try:
            return question()
        except (GLib.Error, AttributeError):
            return otherwise


def containing(*parts):
    """A predicate: the text holds all parts, in this order."""

    def holds(text):
        position = 0
        for part in parts:
            position = text.find(part, position)
            if position < 0:
                return False
            position += len(part)
        return True

    return holds


def wait_until(what, condition, seconds=LONGEST_WAIT):
    """Answers what the condition answers as soon as that is true in Python's sense."""
    end = time.monotonic() + seconds
    while True:
        dispatch_events()
        answer = condition()
        if answer:
            return answer
        if time.monotonic() > end:
            raise NotThere(f"Not so within {seconds} s: {what}")
        time.sleep(0.02)


def dispatch_events():
    context = GLib.MainContext.default()
    while context.iteration(False):
        pass


def application(process_id):
    """The root of the program's tree, or none before the program has joined the accessibility bus."""
    for child in Node(Atspi.get_desktop(0)).children:
        if Node._ask(0, child.accessible.get_process_id) == process_id:
            child.accessible.set_cache_mask(Atspi.Cache.NONE)
            return child
    return None


class Events:
    """Keeps what the program tells assistive tools by itself, while it is entered."""

    Event = collections.namedtuple("Event", "type source detail1 about")

    def __init__(self, *types):
        self._types = types
        self.received = []
        self._listener = Atspi.EventListener.new(self._receive)

    def __enter__(self):
        for kind in self._types:
            self._listener.register(kind)
        return self

    def __exit__(self, *_):
        for kind in self._types:
            self._listener.deregister(kind)

    def _receive(self, event):
        about = event.any_data if isinstance(event.any_data, Atspi.Accessible) else None
        self.received.append(
            self.Event(event.type, Node(event.source), event.detail1, Node(about) if about else None)
        )
