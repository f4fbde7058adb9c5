// A rotor of eight teeth: tips at 9 mm, roots at 6.5 mm, bore 3 mm, height 10 mm, its middle in the origin.
SetFactory("OpenCASCADE");
Cylinder(1) = {0, 0, -5, 0, 0, 10, 9};
For tooth In {0:3}
  Box(10 + tooth) = {-10, -1.2, -5, 20, 2.4, 10};
  Rotate{ {0, 0, 1}, {0, 0, 0}, tooth * Pi / 4 }{ Volume{10 + tooth}; }
EndFor
Cylinder(20) = {0, 0, -5, 0, 0, 10, 6.5};
Cylinder(21) = {0, 0, -5, 0, 0, 10, 3};
BooleanUnion(30) = { Volume{20}; Delete; }{ Volume{10:13}; Delete; };
BooleanIntersection(31) = { Volume{30}; Delete; }{ Volume{1}; Delete; };
BooleanDifference(32) = { Volume{31}; Delete; }{ Volume{21}; Delete; };
