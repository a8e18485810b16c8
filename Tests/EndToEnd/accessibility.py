"""What an assistive tool sees of the console.

Everything is asked of the program anew: nothing is remembered that could be out of date.
"""

import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

# Much more than anything takes; a run that fails is the only one that waits so long.
LONGEST_WAIT = 30

State = Atspi.StateType


class NotThere(AssertionError):
    """Something was not to be found, or did not become true."""


def _asked(otherwise, question):
    """A property that is asked of the program; this is the answer when there is nobody to ask any more."""

    def answer(node):
        try:
            return question(node.accessible)
        except (GLib.Error, AttributeError):
            return otherwise

    return property(answer)


def _actions(accessible):
    return [Atspi.Action.get_action_name(accessible, i) for i in range(Atspi.Action.get_n_actions(accessible))]


def _centre(accessible):
    box = Atspi.Component.get_extents(accessible, Atspi.CoordType.SCREEN)
    return (box.x + box.width // 2, box.y + box.height // 2) if box.width > 0 else None


class Node:
    """One object of the tree. One that is gone meanwhile answers empty texts and no states."""

    def __init__(self, accessible):
        self.accessible = accessible

    role = _asked("", lambda accessible: accessible.get_role_name())
    name = _asked("", lambda accessible: accessible.get_name() or "")
    description = _asked("", lambda accessible: accessible.get_description() or "")
    # The content of a field, or of a text that can be selected.
    text = _asked("", lambda accessible: Atspi.Text.get_text(accessible, 0, -1) or "")
    states = _asked((), lambda accessible: accessible.get_state_set().get_states())
    process = _asked(0, lambda accessible: accessible.get_process_id())
    actions = _asked([], _actions)
    _child_count = _asked(0, lambda accessible: accessible.get_child_count())
    centre = _asked(None, _centre)

    @property
    def children(self):
        for index in range(self._child_count):
            try:
                child = self.accessible.get_child_at_index(index)
            except GLib.Error:
                continue
            if child:
                yield Node(child)

    def has(self, state):
        return state in self.states

    def do(self, action):
        """Performs the action of this name, as a screen reader does on behalf of its user."""
        Atspi.Action.do_action(self.accessible, self.actions.index(action))

    def set_text(self, text):
        if not Atspi.EditableText.set_text_contents(self.accessible, text):
            raise NotThere(f"{self} refused the text.")

    def focus(self):
        Atspi.Component.grab_focus(self.accessible)

    def walk(self, hidden=False, depth=0):
        """This and everything below that is showing, top to bottom."""
        yield self, depth
        for child in self.children:
            if hidden or child.has(State.SHOWING):
                yield from child.walk(hidden, depth + 1)

    def all(self, role=None, name=None, **more):
        """Everything showing below that fits; texts are compared whole, a predicate is asked."""
        return [node for node, depth in self.walk() if depth and node.fits(role, name, **more)]

    def fits(self, role=None, name=None, description=None, state=None):
        wanted = ((role, "role"), (name, "name"), (description, "description"))
        return all(
            value is None or (value(getattr(self, key)) if callable(value) else value == getattr(self, key))
            for value, key in wanted
        ) and (state is None or self.has(state))

    def dump(self, hidden=False):
        lines = []
        for node, depth in self.walk(hidden):
            states = " ".join(sorted(state.value_nick for state in node.states)) or "gone"
            line = f"{'  ' * depth}{node.role} {node.name!r}"
            if node.description:
                line += f" description={node.description!r}"
            if node.text and node.text != node.name:
                line += f" text={node.text!r}"
            lines.append(f"{line} [{states}]")
        return "\n".join(lines)

    def __str__(self):
        return f"{self.role} {self.name!r}"


def containing(*parts):
    """A predicate: the text holds all parts, in this order."""

    def holds(text):
        for part in parts:
            _, found, text = text.partition(part)
            if not found:
                return False
        return True

    return holds


def wait_until(what, condition):
    """Answers what the condition answers as soon as that is true in Python's sense."""
    end = time.monotonic() + LONGEST_WAIT
    context = GLib.MainContext.default()
    while True:
        while context.iteration(False):
            pass
        answer = condition()
        if answer:
            return answer
        if time.monotonic() > end:
            raise NotThere(f"Not so within {LONGEST_WAIT} s: {what}")
        time.sleep(0.02)


def application(process_id):
    """The root of the program's tree, or none before the program has joined the accessibility bus."""
    for child in Node(Atspi.get_desktop(0)).children:
        if child.process == process_id:
            child.accessible.set_cache_mask(Atspi.Cache.NONE)
            return child
    return None


class Events:
    """Keeps what the program tells assistive tools by itself, while it is entered."""

    def __init__(self, kind):
        self._kind = kind
        self._begun = []  # those that say that something is so now, not that it is over
        self._listener = Atspi.EventListener.new(self._receive)

    def __enter__(self):
        self._listener.register(self._kind)
        return self

    def __exit__(self, *_):
        self._listener.deregister(self._kind)

    def came_from(self, role):
        return any(node.role == role for node in self._begun)

    def _receive(self, event):
        if event.detail1:
            self._begun.append(Node(event.source))
