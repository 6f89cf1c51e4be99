UPDATE/*/* */ */t SET--
 b=Hex/**/(/**/'41'/**/)