// A drive through the axial coupling: a motor turns the driver's inertia, the coupling's field the driven one, which works
// against a load that grows with its speed.
//
// Import AxialCoupling.fmu first (docs/fmu.md says how it is made). Tools make a block of it and spell its variables by their own
// rules, often with underscores for dots: driver_hinge.angle is called driver_hinge_angle here. Communication step: 1 ms.
model AxialDrive "Motor, axial magnetic coupling, load"
  import Modelica.Mechanics.Rotational;
  import Modelica.Units.SI;

  parameter SI.Torque motorTorque = 0.6 "Of the motor, from the start on";
  parameter SI.Inertia driverInertia = 5e-4;
  parameter SI.Inertia drivenInertia = 5e-4;
  parameter SI.RotationalDampingConstant loadDamping = 0.02 "Of the load: 0.6 N.m at 30 rad/s";

  Rotational.Sources.ConstantTorque motor(tau_constant = motorTorque, useSupport = false);
  Rotational.Components.Inertia driver(J = driverInertia, phi(start = 0, fixed = true), w(start = 0, fixed = true));
  Rotational.Components.Inertia driven(J = drivenInertia, phi(start = 0, fixed = true), w(start = 0, fixed = true));
  Rotational.Components.Damper load(d = loadDamping);
  Rotational.Components.Fixed ground;

  // What the field does to each disc, and where the discs are.
  Rotational.Sources.Torque onDriver(useSupport = false);
  Rotational.Sources.Torque onDriven(useSupport = false);
  Rotational.Sensors.AngleSensor driverAngle, drivenAngle;
  Rotational.Sensors.SpeedSensor driverSpeed, drivenSpeed;

  AxialCoupling coupling "The imported FMU";
equation
  connect(motor.flange, driver.flange_a);
  connect(driven.flange_b, load.flange_a);
  connect(load.flange_b, ground.flange);

  connect(driver.flange_b, driverAngle.flange);
  connect(driver.flange_b, driverSpeed.flange);
  connect(driver.flange_b, onDriver.flange);
  connect(driven.flange_a, drivenAngle.flange);
  connect(driven.flange_a, drivenSpeed.flange);
  connect(driven.flange_a, onDriven.flange);

  // With the speeds the field is that of the end of each step; without them it lags by one.
  connect(driverAngle.phi, coupling.driver_hinge_angle);
  connect(driverSpeed.w, coupling.driver_hinge_angularVelocity);
  connect(drivenAngle.phi, coupling.driven_hinge_angle);
  connect(drivenSpeed.w, coupling.driven_hinge_angularVelocity);
  connect(coupling.driver_hinge_torque, onDriver.tau);
  connect(coupling.driven_hinge_torque, onDriven.tau);

  annotation(experiment(StartTime = 0, StopTime = 0.24, Interval = 0.001));
end AxialDrive;
