// The ring of ring.geo with triangles in rows: its section, carried round in layers.
Point(1) = {10, 0, -5};
Point(2) = {20, 0, -5};
Point(3) = {20, 0, 5};
Point(4) = {10, 0, 5};
Line(1) = {2, 1};
Line(2) = {3, 2};
Line(3) = {4, 3};
Line(4) = {1, 4};
Transfinite Curve{1:4} = Round(10 / edge) + 1;
section[] = {1:4};
For quarter In {1:4}
  next[] = {};
  For i In {0:3}
    swept[] = Extrude{ {0, 0, 1}, {0, 0, 0}, Pi / 2 }{ Curve{section[i]}; Layers{Round(10 * Pi / edge)}; };
    next[] += swept[0];
  EndFor
  section[] = next[];
EndFor
Coherence;
