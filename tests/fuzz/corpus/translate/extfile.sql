UPDATE t SET u = EXTFILE('it''s') , d=EXTFILE('03/04/2005') -- x
;;