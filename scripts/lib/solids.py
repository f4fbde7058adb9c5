"""Closed solids with their faces turned outward, and their OBJ files. Lengths in millimetres."""
from math import cos, pi, sin


def box_object(name, centre, size, turn=lambda vertex: vertex):
    """One closed box as (name, vertices, quads), normals outward; millimetres."""
    vertices = []
    for corner in range(8):
        sides = [1 if corner >> axis & 1 else -1 for axis in range(3)]
        vertices.append(turn([centre[axis] + sides[axis] * size[axis] / 2 for axis in range(3)]))
    quads = [(0, 4, 6, 2), (1, 3, 7, 5), (0, 1, 5, 4), (2, 6, 7, 3), (0, 2, 3, 1), (4, 5, 7, 6)]
    return name, vertices, quads


def ring_object(name, centre, radii, sides, height, turn=lambda vertex: vertex):
    """One regular polygonal ring about z as box_object's; inner corners at radius 0: a disc."""
    inner, outer = radii
    vertices = []
    for radius in (outer, inner) if inner else (outer,):
        for z in (-height / 2, height / 2):
            for side in range(sides):
                angle = (2 * side + 1) * pi / sides
                place = (radius * cos(angle), radius * sin(angle), z)
                vertices.append(turn([centre[axis] + place[axis] for axis in range(3)]))
    below, above, hole_below, hole_above = ([start * sides + side for side in range(sides)] for start in range(4))
    faces = []
    for i in range(sides):
        j = (i + 1) % sides
        faces.append((below[i], below[j], above[j], above[i]))
        if inner:
            faces.append((hole_below[j], hole_below[i], hole_above[i], hole_above[j]))
            faces.append((above[i], above[j], hole_above[j], hole_above[i]))
            faces.append((below[j], below[i], hole_below[i], hole_below[j]))
    if not inner:
        faces += [tuple(above), tuple(reversed(below))]
    return name, vertices, faces


def prism_object(name, outline, bottom, top):
    """One upright prism as box_object's; outline: its corners (x, y), counterclockwise seen from above."""
    count = len(outline)
    vertices = [[x, y, z] for z in (bottom, top) for x, y in outline]
    sides = [(i, (i + 1) % count, (i + 1) % count + count, i + count) for i in range(count)]
    return name, vertices, sides + [tuple(range(count, 2 * count)), tuple(reversed(range(count)))]


def joined(name, objects):
    """Several solids apart from each other as one object."""
    vertices, faces = [], []
    for _name, corners, sides in objects:
        faces += [tuple(len(vertices) + index for index in face) for face in sides]
        vertices += corners
    return name, vertices, faces


def obj_text(title, objects, maker="scripts/make-examples"):
    """The text of a Wavefront OBJ file; `maker` is the program that its head names."""
    lines = [f"# {title}", f"# Lengths in millimetres. Made by {maker}."]
    offset = 1
    for name, vertices, quads in objects:
        lines.append(f"o {name}")
        lines += ["v " + " ".join(f"{value:.9g}" for value in vertex) for vertex in vertices]
        lines += ["f " + " ".join(str(index + offset) for index in quad) for quad in quads]
        offset += len(vertices)
    return "\n".join(lines) + "\n"
