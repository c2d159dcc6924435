-- The private desktop never opens the sound cards and cameras of the machine it runs on.
alsa_monitor.enabled = false
v4l2_monitor.enabled = false
libcamera_monitor.enabled = false
